#include "OpeningChecks.h"

#include "AdminData.h"
#include "PropertyList.h"
#include "Queries.h"
#include "Schema.h"
#include "Uuid.h"

#include <QFile>
#include <QFileInfo>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace
{

/// The schema that iPhoto 9.6 writes and that every minor from kOldestMinor on is compatible with.
constexpr int kSchemaMajor = 110;
constexpr int kOldestMinor = 220;
constexpr int kNewestMinor = 226;

Error noLibrary(const QString& package)
{
    return {ErrorCode::Unsupported,
            u"\"%1\" is no iPhoto library: choose the library package, the folder that holds "
            "\"AlbumData.xml\" and \"Database\"."_s.arg(package)};
}

Error foreign(const QString& package, const QString& what)
{
    return {ErrorCode::Unsupported,
            u"The library \"%1\" is %2. Only libraries of iPhoto '11 (9.x) are supported."_s.arg(
                package, what)};
}

bool isReadable(const QString& path)
{
    return QFileInfo(path).isReadable();
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
        return noLibrary(package);
    }
    if (!folder.isReadable() || !folder.isExecutable()) {
        return Error{ErrorCode::Unreadable,
                     u"The library \"%1\" cannot be read: check its permissions."_s.arg(package)};
    }
    if (QFileInfo::exists(package + "/Aperture.aplib"_L1)) {
        return foreign(package, u"an Aperture library"_s);
    }
    const QString database = package + "/Database/apdb/Library.apdb"_L1;
    const QString info = package + "/Info.plist"_L1;
    if (!QFileInfo(package + "/Database/apdb"_L1).isDir() || !QFileInfo::exists(database) ||
        !QFileInfo::exists(info)) {
        return noLibrary(package);
    }
    for (const QString& file : {database, info}) {
        if (!isReadable(file)) {
            return Error{
                ErrorCode::Unreadable,
                u"\"%1\" in the library \"%2\" cannot be read: check its permissions."_s.arg(
                    file, package)};
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
    const QStringList places{package,
                             package + "/Masters"_L1,
                             package + "/Database"_L1,
                             package + "/Database/apdb"_L1,
                             package + "/Database/apdb/Library.apdb"_L1,
                             package + "/Database/apdb/Properties.apdb"_L1,
                             package + "/Database/apdb/ImageProxies.apdb"_L1};
    for (const QString& place : places) {
        if (QFileInfo::exists(place) && ::access(QFile::encodeName(place).constData(), W_OK) != 0) {
            return Error{ErrorCode::NotWritable,
                         u"The library \"%1\" is not writable: change the permissions of \"%2\", "
                         "or copy the library to where you may write."_s.arg(package, place)};
        }
    }
    return {};
}

Result<void> OpeningChecks::readable(Connection& connection)
{
    const QString& package = connection.packagePath();
    const auto hasTable = [&connection](const char* name) {
        return Sql::firstInteger(connection,
                                 "SELECT count(*) FROM sqlite_master WHERE type = 'table'"
                                 " AND name = ?",
                                 QString::fromLatin1(name))
                   .value_or(0) > 0;
    };
    for (const char* table : {"RKAdminData", "RKMaster", "RKVersion", "RKFolder", "RKAlbum"}) {
        if (!hasTable(table)) {
            return foreign(package,
                           u"of an unknown kind (no table %1)"_s.arg(QString::fromLatin1(table)));
        }
    }
    const QString application =
        AdminData::text(connection, u"database"_s, u"applicationIdentifier"_s);
    if (application != "com.apple.iPhoto9"_L1) {
        return foreign(package, u"not one of iPhoto (its owner is \"%1\")"_s.arg(application));
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

Result<void> OpeningChecks::soundDatabases(Connection& connection)
{
    for (const char* sql : {"PRAGMA main.integrity_check(1)",
                            "PRAGMA prop.integrity_check(1)",
                            "PRAGMA prox.integrity_check(1)"}) {
        const QString found = Sql::firstText(connection, sql);
        if (found != "ok"_L1) {
            return Error{ErrorCode::Damaged,
                         u"A database of the library \"%1\" is damaged, so it is not written to: "
                         "%2. Let iPhoto repair it, or restore it from a backup."_s.arg(
                             connection.packagePath(), found)};
        }
    }
    return {};
}
