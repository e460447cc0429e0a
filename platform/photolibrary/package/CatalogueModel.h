#pragma once

#include <QList>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

/// What the library's catalogues for other applications tell, as read from the databases. Dates
/// are seconds since 2001-01-01T00:00:00 UTC.

/// One photo of the catalogue: neither in the trash nor hidden.
struct CataloguePhoto {
    qint64 id{0};
    QString guid;
    QString name;
    bool flagged{false};
    QString comment; ///< empty where there is none
    qint64 roll{0};  ///< modelId of its event
    qint64 rating{0};
    QString preview;   ///< below Previews; null when the master serves
    QString master;    ///< below Masters, or a path of the Mac for one outside the package
    QString thumbnail; ///< below Thumbnails; null when there is none
    bool isReference{false};
    bool isMovie{false};
    std::optional<double> imageChanged;
    std::optional<double> date;
    std::optional<double> metadataChanged;
    std::optional<double> latitude;
    std::optional<double> longitude;
};

/// One event.
struct CatalogueRoll {
    qint64 id{0};
    QString guid;
    QString name;
    qint64 albumId{0}; ///< modelId of its implicit album
    double date{0.0};  ///< of its earliest photo
    qint64 keyPhoto{0};
    QList<qint64> photos; ///< by date; never empty
};

/// What the databases do not tell of an album; of a new one what iPhoto begins with.
struct CatalogueAlbumSettings {
    QString sortOrder{QStringLiteral("1")};
    double transitionSpeed{1.0}; ///< of the slide show that it can be shown as
    bool isShuffled{false};
};

/// One album or folder of the catalogue's list.
struct CatalogueAlbum {
    enum class Kind : quint8 {
        All,     ///< every photo
        Query,   ///< what a rule finds
        Regular, ///< what somebody put into it; can be shown as a slide show
        Folder,
    };

    Kind kind{Kind::Regular};
    qint64 id{0};
    QString name;
    QString type;
    QString guid;
    std::optional<qint64> parent; ///< id of the enclosing folder of the user's
    QString songPath;             ///< null when there is none
    QList<qint64> photos;         ///< by date
    CatalogueAlbumSettings settings;
};

struct CatalogueModel {
    QList<CataloguePhoto> photos;        ///< by event, then by date
    QList<CatalogueRoll> rolls;          ///< by date
    QList<CatalogueAlbum> builtInAlbums; ///< before the events
    QList<CatalogueAlbum> userAlbums;    ///< after the events
    double offset{0.0}; ///< added to a date for what the catalogue calls its local form
};
