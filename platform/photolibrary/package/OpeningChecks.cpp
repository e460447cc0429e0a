#include "OpeningChecks.h"

#include "AdminData.h"
#include "DatabaseFiles.h"
#include "PropertyList.h"
#include "Queries.h"
#include "Schema.h"
#include "Uuid.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <system_error>

using namespace Qt::StringLiterals;

namespace
{

/// The schema that iPhoto 9.6 writes and that every minor from kOldestMinor on is compatible with.
constexpr int kSchemaMajor = 110;
constexpr int kOldestMinor = 220;
constexpr int kNewestMinor = 226;

Error noLibrary(const QString& package, const QString& missing)
{
    return {ErrorCode::Unsupported,
            u"\"%1\" is no iPhoto library: %2. Choose the library package, the folder that holds "
            "\"AlbumData.xml\" and \"Database\"."_s.arg(package, missing)};
}

Error foreign(const QString& package, const QString& what)
{
    return {ErrorCode::Unsupported,
            u"The library \"%1\" is %2. Only libraries of iPhoto '11 (9.x) are supported."_s.arg(
                package, what)};
}

/// Whether a file can be read, or a folder listed and entered.
Result<void> isReadable(const QString& package, const QString& path)
{
    const QFileInfo entry(path);
    return entry.isReadable() && (!entry.isDir() || entry.isExecutable())
               ? Result<void>()
               : Error{ErrorCode::Unreadable,
                       u"\"%1\" in the library \"%2\" cannot be read: check its permissions."_s.arg(
                           path, package)};
}

/// Where a writer makes or changes something, relative to the package, outer folders first: what is
/// not there is made, which takes the folder around it. Of the folders by date only those that an
/// import uses now; sidecars lie in as many as there were imports.
QStringList writtenPlaces()
{
    QStringList places{QString(), u"/Database"_s};
    const QStringList day = QDate::currentDate().toString(u"yyyy/MM/dd"_s).split(u'/');
    for (const QLatin1StringView folder :
         {"/Masters"_L1, "/Previews"_L1, "/Thumbnails"_L1, "/Database/Versions"_L1}) {
        QString place = folder;
        places << place;
        for (const QString& part : day) {
            place += u'/' + part;
            places << place;
        }
    }
    places << u"/Database/apdb"_s << u"/Database/Albums"_s << u"/Database/Folders"_s
           << u"/iLifeShared"_s;
    for (const QLatin1StringView database : DatabaseFiles::kTogether) {
        places << "/Database/apdb/"_L1 + database;
    }
    places << u"/AlbumData.xml"_s << u"/iLifeShared/AlbumData2.xml"_s;
    return places;
}

/// The tables of one database that reading needs.
struct Contents {
    const char* file{nullptr};
    const char* allTables{nullptr}; ///< asks for their names
    std::initializer_list<const char*> tables;
    bool tellsTheKind{false}; ///< without one of them it is a library of another program
};

constexpr Contents kContents[] = {
    {"Library.apdb",
     "SELECT name FROM main.sqlite_master WHERE type = 'table'",
     {"RKAdminData", "RKMaster", "RKVersion", "RKFolder", "RKAlbum"},
     true},
    {"Properties.apdb",
     "SELECT name FROM prop.sqlite_master WHERE type = 'table'",
     {"RKIptcProperty", "RKUniqueString", "RKExifNumberProperty"},
     false},
    {"ImageProxies.apdb",
     "SELECT name FROM prox.sqlite_master WHERE type = 'table'",
     {"RKImageProxyState"},
     false},
};

Result<void> hasTables(Connection& connection, const Contents& contents)
{
    const QString& package = connection.packagePath();
    const QStringList found = Sql::texts(connection, contents.allTables);
    for (const char* name : contents.tables) {
        const QString table = QString::fromLatin1(name);
        if (found.contains(table)) {
            continue;
        }
        if (contents.tellsTheKind && !found.isEmpty()) {
            return foreign(package, u"of an unknown kind (no table %1)"_s.arg(table));
        }
        const QString lack = found.isEmpty() ? u"is empty"_s : u"lacks the table %1"_s.arg(table);
        return Error{
            ErrorCode::Damaged,
            u"The database \"%1/Database/apdb/%2\" %3: let iPhoto repair the library, or "
            "restore it from a backup."_s.arg(package, QString::fromLatin1(contents.file), lack)};
    }
    return {};
}

int schemaVersion(Connection& connection, const QString& name)
{
    return AdminData::text(connection, u"database"_s, name).toInt();
}

/// A file name becomes part of an output path, so one that is more than a name is refused.
Result<void> safeFileNames(Connection& connection)
{
    Sql::Query query(connection,
                     "SELECT fileName FROM RKMaster WHERE fileName IS NOT NULL AND"
                     " (fileName IN ('', '.', '..') OR instr(fileName, '/') > 0"
                     " OR instr(CAST(fileName AS BLOB), x'00') > 0)");
    if (!query.next()) {
        return {};
    }
    return Error{ErrorCode::Damaged,
                 u"The library \"%1\" names a photo's file \"%2\", which is no file name. Let "
                 "iPhoto repair it, or restore it from a backup."_s.arg(
                     connection.packagePath(), Sql::text(query.column(0)))};
}

} // namespace

Result<QString> OpeningChecks::recognise(const QString& package)
{
    const QFileInfo folder(package);
    if (!folder.exists()) {
        return Error{ErrorCode::NotFound,
                     u"There is no library at \"%1\": check the path."_s.arg(package)};
    }
    if (!folder.isDir()) {
        return noLibrary(package, u"it is no folder"_s);
    }
    if (!folder.isReadable() || !folder.isExecutable()) {
        return Error{ErrorCode::Unreadable,
                     u"The library \"%1\" cannot be read: check its permissions."_s.arg(package)};
    }
    // A library of iPhoto that Aperture has opened as well has this folder, too.
    if (QFileInfo::exists(package + "/Aperture.aplib"_L1) &&
        !QFileInfo::exists(package + "/AlbumData.xml"_L1)) {
        return foreign(package, u"an Aperture library"_s);
    }
    // Outer folders first: what lies in one that cannot be entered cannot be seen.
    for (const QString& part :
         {u"Database"_s, u"Database/apdb"_s, u"Database/apdb/Library.apdb"_s}) {
        const QString path = package + u'/' + part;
        if (!QFileInfo::exists(path)) {
            return noLibrary(package, u"it has no \"%1\""_s.arg(part));
        }
        if (const Result<void> readable = isReadable(package, path); !readable.ok()) {
            return readable.error();
        }
    }
    const QString info = package + "/Info.plist"_L1;
    if (!QFileInfo::exists(info)) {
        return Error{ErrorCode::Damaged,
                     u"The library \"%1\" has no \"Info.plist\", which tells its version: restore "
                     "that file from a backup."_s.arg(package)};
    }
    for (const QString& path : {info,
                                package + "/Database/apdb/Properties.apdb"_L1,
                                package + "/Database/apdb/ImageProxies.apdb"_L1}) {
        const Result<void> readable =
            QFileInfo::exists(path) ? isReadable(package, path) : Result<void>();
        if (!readable.ok()) {
            return readable.error();
        }
    }
    const Result<QVariant> list = PropertyList::read(info);
    const QString version =
        list.ok() ? list.value().toMap().value(u"CFBundleShortVersionString"_s).toString()
                  : QString();
    if (version.isEmpty()) {
        return Error{ErrorCode::Damaged,
                     u"The library \"%1\" does not say its version: \"%2\" is damaged. Restore it "
                     "from a backup."_s.arg(package, info)};
    }
    return version;
}

Result<void> OpeningChecks::permissions(const QString& package)
{
    for (const QString& place : writtenPlaces()) {
        const QString path = package + place;
        const int mode = QFileInfo(path).isDir() ? W_OK | X_OK : W_OK;
        const bool permitted =
            ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), mode, AT_EACCESS) == 0;
        if (!permitted && errno != ENOENT) {
            const QString reason = QString::fromStdString(std::generic_category().message(errno));
            return Error{
                ErrorCode::NotWritable,
                u"The library \"%1\" is not writable (%2: %3). Change the permissions of "
                "\"%2\", or copy the library to where you may write."_s.arg(package, path, reason)};
        }
        // What is changed is read before: to be backed up, and to keep what nothing else tells.
        Result<void> readable = permitted ? isReadable(package, path) : Result<void>();
        if (!readable.ok()) {
            return readable;
        }
    }
    return {};
}

Result<void> OpeningChecks::ownDatabases(const QString& package)
{
    for (const Contents& contents : kContents) {
        const QString path = package + "/Database/apdb/"_L1 + QString::fromLatin1(contents.file);
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) == 0 && status.st_nlink > 1) {
            // Journals bear the database's name, so that who opens it by the other one would not
            // see that a crash left it half-written.
            return Error{ErrorCode::NotWritable,
                         u"The library \"%1\" is not written to: its database \"%2\" is the same "
                         "file as another one (a hard link), which would change with it. Copy the "
                         "library, and use the copy."_s.arg(package, path)};
        }
    }
    return {};
}

Result<void> OpeningChecks::readable(Connection& connection)
{
    const QString& package = connection.packagePath();
    for (const Contents& contents : kContents) {
        if (Result<void> found = hasTables(connection, contents); !found.ok()) {
            return found;
        }
    }
    const QString application =
        AdminData::text(connection, u"database"_s, u"applicationIdentifier"_s);
    if (application != "com.apple.iPhoto9"_L1) {
        return foreign(package, u"not one of iPhoto (its owner is \"%1\")"_s.arg(application));
    }
    if (AdminData::text(connection, u"database"_s, u"isIPhotoLibrary"_s) != "1"_L1) {
        return foreign(package, u"marked as no library of iPhoto"_s);
    }
    if (schemaVersion(connection, u"versionMajor"_s) != kSchemaMajor) {
        return foreign(package, u"of an unknown schema"_s);
    }
    return safeFileNames(connection);
}

Result<void> OpeningChecks::writableSchema(Connection& connection)
{
    const QString& package = connection.packagePath();
    const Error readOnly{ErrorCode::Unsupported,
                         u"The library \"%1\" is not written to: its databases are of another "
                         "kind than iPhoto 9.6 writes (%2). Open it in iPhoto 9.6 first."_s};
    const auto refused = [&](const QString& reason) {
        return Error{readOnly.code, readOnly.message.arg(package, reason)};
    };
    const int minor = schemaVersion(connection, u"versionMinor"_s);
    if (minor < kOldestMinor || minor > kNewestMinor) {
        return refused(u"schema %1.%2"_s.arg(kSchemaMajor).arg(minor));
    }
    for (const char* sql :
         {"SELECT name FROM main.sqlite_master WHERE type = 'trigger' OR (type = 'table' AND sql"
          " LIKE '%VirtualReaderModule%')",
          "SELECT name FROM prop.sqlite_master WHERE type = 'trigger' OR (type = 'table' AND sql"
          " LIKE '%VirtualReaderModule%')",
          "SELECT name FROM prox.sqlite_master WHERE type = 'trigger' OR (type = 'table' AND sql"
          " LIKE '%VirtualReaderModule%')"}) {
        const QString name = Sql::firstText(connection, sql);
        if (!name.isNull()) {
            return refused(u"a trigger or table of a foreign program, \"%1\""_s.arg(name));
        }
    }
    const QStringList mismatches = Schema::mismatches(connection);
    return mismatches.isEmpty() ? Result<void>() : Result<void>(refused(mismatches.first()));
}

bool OpeningChecks::closedClean(Connection& connection)
{
    return AdminData::text(connection, u"database"_s, u"closedClean"_s) == "1"_L1;
}

Error OpeningChecks::notClosed(const QString& package)
{
    return {
        ErrorCode::NotClosed,
        u"iPhoto did not close the library \"%1\" properly, or has it open now, so it is not "
        "written to. Open it in iPhoto and quit. Or, where iPhoto does not run, accept it as "
        "it is: --after-crash does so once its integrity check passes, no row leads nowhere, no "
        "preview or thumbnail is missing, no file or sidecar belongs to nothing, and "
        "\"AlbumData.xml\" can be read. What else \"verify\" tells does not matter, such as "
        "originals that are missing or of another size, files left unfinished, links to the "
        "databases, dates and key photos of events, sets of ids, and sidecars and catalogues that "
        "lag."_s.arg(package)};
}
