#pragma once

#include "Connection.h"

#include <QList>
#include <QStringList>

/// What the databases of a library look like: schema version 110, minor 226.
namespace Schema
{

inline constexpr int kMajorVersion = 110;
inline constexpr int kMinorVersion = 226;
/// Libraries of this minor version and later have the same tables.
inline constexpr int kOldestMinorVersion = 220;
/// What sidecars and settings call the version of the library ("projectVersion").
inline constexpr int kProjectVersion = 8;
/// RKAlbum.albumSubclass of albums whose photos a query tells: smart albums.
inline constexpr int kSubclassOfQueries = 2;

enum class Database : quint8 {
    Library,
    Properties,
    ImageProxies,
    BigBlobs,
    Faces,
    History,
    SharingActivity,
    Projects,
};

/// All of them, in the order in which they are made.
[[nodiscard]] QList<Database> databases();

struct Column {
    QString name;
    QString type; ///< as SQLite is told
};

struct Index {
    QStringList columns;
    bool isUnique{false};
};

struct Table {
    QString name;
    QList<Column> columns;
    QList<Index> indexes;
};

/// Relative to the package.
[[nodiscard]] QString filePath(Database database);
[[nodiscard]] QList<Table> tables(Database database);
/// What makes the tables and indexes in an empty database.
[[nodiscard]] QStringList statements(Database database);

/// Why the library must not be written to: a clause for each table of the three databases of the
/// connection that is missing or has other columns than are known, for triggers and for tables that
/// need the photo application's own code. Empty when it is of the known form.
/// Errors: SQLite::Exception.
[[nodiscard]] QStringList mismatches(Connection& connection);

} // namespace Schema
