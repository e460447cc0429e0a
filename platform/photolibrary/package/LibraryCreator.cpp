#include "LibraryCreator.h"

#include "AdminData.h"
#include "AtomicFile.h"
#include "BuiltInRows.h"
#include "Catalogues.h"
#include "Clock.h"
#include "Connection.h"
#include "DatabaseFiles.h"
#include "LibraryErrors.h"
#include "PropertyList.h"
#include "Schema.h"
#include "Sidecars.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

/// The library version that the application shows.
constexpr auto kVersion = "9.6.1"_L1;

Error failed(const QString& package, const QString& why)
{
    return {ErrorCode::NotWritable,
            u"The library \"%1\" could not be made (%2)."_s.arg(package, why)};
}

Result<void> makeFolders(const QString& package)
{
    for (const QString& folder : {u"Database/apdb"_s,
                                  u"Database/Albums"_s,
                                  u"Database/Folders"_s,
                                  u"Database/Versions"_s,
                                  u"Database/Faces/Detected"_s,
                                  u"Database/Faces/FaceNames"_s,
                                  u"Database/History/Changes"_s,
                                  u"Masters"_s,
                                  u"Previews"_s,
                                  u"Thumbnails/Segments"_s,
                                  u"iLifeShared"_s}) {
        if (Result<void> made = AtomicFile::makeFolder(package + '/'_L1 + folder); !made.ok()) {
            return made;
        }
    }
    return {};
}

Result<void> makeDatabase(const QString& package, Schema::Database database)
{
    const QString path = package + '/'_L1 + Schema::filePath(database);
    try {
        SQLite::Database made(QFile::encodeName(path).toStdString(),
                              SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        made.exec("PRAGMA page_size=16384");
        made.exec("PRAGMA auto_vacuum=2");
        SQLite::Transaction transaction(made);
        const QStringList statements = Schema::statements(database);
        for (const QString& statement : statements) {
            made.exec(statement.toStdString());
        }
        transaction.commit();
    } catch (const SQLite::Exception& exception) {
        return failed(package, QString::fromUtf8(exception.getErrorStr()));
    }
    return {};
}

/// Older programs look for the databases one folder higher.
Result<void> makeLinks(const QString& package)
{
    for (const QLatin1StringView name : DatabaseFiles::kLinked) {
        const QString link = package + "/Database/"_L1 + name;
        if (!QFile::link("apdb/"_L1 + name, link)) {
            return failed(package, u"no link %1"_s.arg(link));
        }
    }
    return {};
}

Result<void> writeList(const QString& path, const QVariantMap& content)
{
    const Result<QByteArray> bytes = PropertyList::toXml(content);
    return bytes.ok() ? AtomicFile::write(path, bytes.value()) : bytes.error();
}

/// Property lists that only begin here; Sidecars fills in what the databases tell.
Result<void> writeLists(const QString& package, double now)
{
    const QVariant date = QVariant::fromValue(PropertyList::Date{std::floor(now)});
    const QList<std::pair<QString, QVariantMap>> lists{
        {u"Info.plist"_s,
         {{u"CFBundleGetInfoString"_s, "iPhoto Library "_L1 + kVersion},
          {u"CFBundleShortVersionString"_s, QString(kVersion)}}},
        {u"ProjectDBVersion.plist"_s,
         {{u"MajorVersion"_s, 1}, {u"MinorVersion"_s, 28}, {u"createDate"_s, date}}},
        {u"Database/Keywords.plist"_s,
         {{u"keywords"_s, QVariantList()}, {u"keywords_version"_s, 7}}},
        {u"Database/DataModelVersion.plist"_s,
         {{u"DatabaseVersion"_s, Schema::kMajorVersion},
          {u"DatabaseMinorVersion"_s, Schema::kMinorVersion},
          {u"DatabaseCompatibleBackToMinorVersion"_s, Schema::kOldestMinorVersion},
          {u"adminProperties"_s, QVariantMap()},
          {u"createDate"_s, date},
          {u"isIPhotoLibrary"_s, true},
          {u"masterCount"_s, 0},
          {u"versionCount"_s, 0},
          {u"projectVersion"_s, 8},
          {u"projectCompatibleBackToVersion"_s, 8}}}};
    for (const auto& [name, content] : lists) {
        if (Result<void> written = writeList(package + '/'_L1 + name, content); !written.ok()) {
            return written;
        }
    }
    const Result<void> lock =
        AtomicFile::write(package + "/iPhotoLock.data"_L1, QByteArrayLiteral(" "));
    return lock.ok() ? AtomicFile::write(package + "/iLifeShared/ApertureDatabaseTimestamp"_L1, {})
                     : lock;
}

/// The marks of the last backup stand in the databases and in a list of their own, which is written
/// only here and must say the same.
Result<void> writeBackupMarks(const QString& package, Connection& connection)
{
    const QString area = u"database"_s;
    const QString uuid = AdminData::text(connection, area, u"tmSyncUuid"_s);
    const int counter = AdminData::text(connection, area, u"tmSyncCounter"_s).toInt();
    Result<void> marked = writeList(package + "/Database/tmSync.plist"_L1,
                                    {{u"tmSyncCounter"_s, counter}, {u"tmSyncUuid"_s, uuid}});
    if (!marked.ok()) {
        return marked;
    }
    const QString model = package + "/Database/DataModelVersion.plist"_L1;
    const Result<QVariant> read = PropertyList::read(model);
    if (!read.ok()) {
        return read.error();
    }
    QVariantMap content = read.value().toMap();
    content[u"databaseUuid"_s] = AdminData::text(connection, area, u"databaseUuid"_s);
    return writeList(model, content);
}

Result<void> fill(const QString& package, double now)
{
    Result<std::unique_ptr<Connection>> opened =
        Connection::open(package, Connection::Mode::Create);
    if (!opened.ok()) {
        return opened.error();
    }
    Connection& connection = *opened.value();
    Changes changes;
    try {
        connection.beginImmediate();
        Writer writer{connection, changes, now};
        BuiltInRows::insert(writer);
        connection.commit();
        if (Result<void> marked = writeBackupMarks(package, connection); !marked.ok()) {
            return marked;
        }
        if (Result<void> written = Sidecars::write(connection, changes, now); !written.ok()) {
            return written;
        }
        const auto catalogues = Catalogues::write(connection, now);
        return catalogues.ok() ? Result<void>() : catalogues.error();
    } catch (const SQLite::Exception& exception) {
        return LibraryErrors::fromSqlite(exception, package);
    }
}

Result<void> build(const QString& package)
{
    const double now = SystemClock().now();
    Result<void> done = makeFolders(package);
    const QList<Schema::Database> databases = Schema::databases();
    for (auto database = databases.begin(); database != databases.end() && done.ok(); ++database) {
        done = makeDatabase(package, *database);
    }
    if (done.ok()) {
        done = makeLinks(package);
    }
    if (done.ok()) {
        done = writeLists(package, now);
    }
    return done.ok() ? fill(package, now) : done;
}

} // namespace

Result<void> LibraryCreator::create(const QString& packagePath)
{
    if (packagePath.isEmpty()) {
        return failed(packagePath, u"it has no name"_s);
    }
    const QString package = QDir::cleanPath(QFileInfo(packagePath).absoluteFilePath());
    const QFileInfo there(package);
    if (there.isSymLink() || (there.exists() && (!there.isDir() || !QDir(package).isEmpty()))) {
        return failed(package, u"there is something of that name"_s);
    }
    if (!there.dir().exists()) {
        return Error{ErrorCode::NotFound, u"There is no folder \"%1\"."_s.arg(there.dir().path())};
    }
    Result<void> done = build(package);
    if (!done.ok()) {
        // The path is absolute and was nothing or an empty folder before.
        QDir(package).removeRecursively();
    }
    return done;
}
