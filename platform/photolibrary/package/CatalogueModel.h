#pragma once

#include "Connection.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>

#include <optional>

/// What AlbumData.xml and AlbumData2.xml say, ready to be written.
namespace CatalogueModel
{

/// A visible photo. Paths are relative to the package.
struct Image {
    qint64 id{0};
    QString caption;
    bool flagged{false};
    QString comment;
    QString guid;
    qint64 roll{0};
    QString event; ///< uuid
    qint64 rating{0};
    QString imagePath;
    QString originalPath; ///< empty when imagePath is the master
    QString thumbPath;
    bool movie{false};
    double imageDate{0.0}; ///< seconds since 2001-01-01, like all dates here
    double imageChanged{0.0};
    double metadataChanged{0.0};
    std::optional<double> latitude;
    std::optional<double> longitude;
    QVariantList faces; ///< carried over
};

enum class Kind : quint8 { Photos, Fixed, Regular, Smart, Event, Folder };

struct Album {
    Kind kind{Kind::Regular};
    qint64 id{0};
    QString name;
    QString type; ///< "Regular", "Event", …
    QString guid;
    std::optional<qint64> parent;
    QString songPath;
    qint64 keyPhoto{0};
    double earliest{0.0};
    QList<qint64> keys;
};

struct Roll {
    qint64 id{0};
    QString guid;
    QString name;
    double date{0.0};
    qint64 keyPhoto{0};
    QList<qint64> keys;
};

struct Catalogue {
    QString applicationVersion{QStringLiteral("9.4")};
    QString archivePath;
    double zoneOffset{0.0}; ///< seconds from a wall clock to the instant on the Mac
    QList<Album> albums;
    QList<Roll> rolls;
    QVariantMap faces; ///< "List of Faces", carried over
    QList<Image> images;
};

/// Reads the databases; `old`: the catalogue that stands in the library now, an empty map when
/// there is none that can be read. Errors: SQLite::Exception.
[[nodiscard]] Catalogue build(Connection& connection, const QVariantMap& old);

} // namespace CatalogueModel
