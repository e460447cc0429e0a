#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What the library knows of a photo, in one record. Paths are absolute; empty means none.
struct PhotoFacts {
    qint64 id{0}; ///< key in the catalogue
    QString guid;
    QString masterGuid;
    QString fileName; ///< the master's
    QString name;     ///< iPhoto keeps one title: name and title are the same
    QString comment;
    int rating{0};    ///< 0..5
    double date{0.0}; ///< seconds since 2001-01-01 UTC; see zoneName
    QString zoneName; ///< "GMT": `date` is the wall clock itself
    int width{0};     ///< pixels, as shown
    int height{0};
    std::optional<double> latitude; ///< signed degrees
    std::optional<double> longitude;
    std::optional<double> altitude; ///< metres
    QStringList keywords;           ///< sorted without regard to case
    QStringList albums;             ///< regular albums of the user
    qint64 rollId{0};               ///< the event's row
    QString rollName;
    QString imagePath;     ///< rendered preview where there is one, else the master
    QString originalPath;  ///< the master; empty when offline or leading out of the package
    QString previewPath;   ///< empty when the library has no rendered preview
    QString thumbnailPath; ///< the 360-pixel one
    bool raw{false};
    bool edited{false};
    bool rotated{false}; ///< turned by the user otherwise than its file says
    bool hidden{false};
    bool movie{false};
    bool missing{false}; ///< master absent or unreadable
    qint64 bytes{0};     ///< master's size on disk, 0 when missing; both of a pair in the trash

    /// Wall clock "2018-10-13T09:18:12" as the photo shows it.
    [[nodiscard]] QString wallClock() const;
};

struct LibrarySummary {
    int photos{0};
    int rolls{0};
    int albums{0};
    int keywords{0};
    int rawPhotos{0};
    qint64 rawBytes{0};
    /// Copies filed from an original: keyword "Corvane Processed" without "Corvane Original".
    int processedPhotos{0};
    int trashedPhotos{0};
    qint64 trashedBytes{0};
    int missing{0};
    bool writable{false};
    QStringList problems; ///< what the integrity check found, one sentence each
};
