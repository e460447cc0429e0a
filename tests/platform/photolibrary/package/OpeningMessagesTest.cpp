#include "Connection.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"
#include "WritableLibrary.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QMap>

#include <sys/stat.h>

#include <array>

using namespace Qt::StringLiterals;

namespace
{

/// "$" stands for the package in the messages below.
struct SqlRefusal {
    const char* sql;
    ErrorCode code;
    const char* message;
};

constexpr std::array kThreeDatabases{"Library.apdb", "Properties.apdb", "ImageProxies.apdb"};

} // namespace

/// What a person is told of a library that is not opened: what, where, and the remedy. A refused
/// opening changes nothing.
class OpeningMessage : public WritableLibrary
{
protected:
    [[nodiscard]] QString database(const char* name) const
    {
        return package() + u"/Database/apdb/"_s + QLatin1StringView(name);
    }

    [[nodiscard]] QByteArray content(const QString& path) const
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    void put(const QString& path, const QByteArray& bytes) const
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    /// Everything below the package: size and content by path.
    [[nodiscard]] QMap<QString, QByteArray> everything() const
    {
        QMap<QString, QByteArray> all;
        QDirIterator walk(package(),
                          QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = walk.next();
            QFile file(path);
            const bool isRead = walk.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
            all.insert(path,
                       isRead ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1)
                              : QByteArray());
        }
        return all;
    }

    /// `message`: with "$" for the package.
    void expectRefused(Access access, ErrorCode code, QString message) const
    {
        const QMap<QString, QByteArray> before = everything();
        const auto library = PhotoLibrary::open(package(), {access, false});
        ASSERT_FALSE(library.ok()) << "instead of: " << message.toStdString();
        EXPECT_EQ(library.error().code, code) << message.toStdString();
        EXPECT_EQ(library.error().message, message.replace(u'$', package()));
        EXPECT_TRUE(everything() == before) << message.toStdString();
    }

    void expectRefusedHowever(ErrorCode code, const QString& message) const
    {
        expectRefused(Access::Read, code, message);
        expectRefused(Access::Write, code, message);
    }

    /// Whether it opens for reading.
    [[nodiscard]] bool isRead() const
    {
        return PhotoLibrary::open(package(), {Access::Read, false}).ok();
    }

    /// Changes the databases behind the program's back.
    void change(const char* sql) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        connection.value()->database().exec(sql);
    }
};

TEST_F(OpeningMessage, aPathThatLeadsNowhereIsNamed)
{
    for (const QString& given : {u"/nowhere"_s, u"/nowhere/"_s, u"/x/../nowhere"_s}) {
        const auto library = PhotoLibrary::open(folder() + given, {Access::Read, false});
        ASSERT_FALSE(library.ok());
        EXPECT_EQ(library.error().code, ErrorCode::NotFound);
        EXPECT_EQ(library.error().message,
                  u"There is no library at \"%1/nowhere\": check the path."_s.arg(folder()));
    }
}

TEST_F(OpeningMessage, aFileIsNoLibrary)
{
    const QString file = makeFile(u"file.photolibrary"_s, "text");
    const auto library = PhotoLibrary::open(file, {Access::Read, false});
    ASSERT_FALSE(library.ok());
    EXPECT_EQ(library.error().code, ErrorCode::Unsupported);
    EXPECT_EQ(
        library.error().message,
        u"\"%1\" is no iPhoto library: it is no folder. Choose the library package, the folder "
        "that holds \"AlbumData.xml\" and \"Database\"."_s.arg(file));
}

TEST_F(OpeningMessage, whichFolderOrDatabaseALibraryLacksIsSaid)
{
    for (const QString& part :
         {u"Database/apdb/Library.apdb"_s, u"Database/apdb"_s, u"Database"_s}) {
        const QString path = package() + u'/' + part;
        ASSERT_TRUE(QDir().rename(path, folder() + u"/aside"_s));
        expectRefusedHowever(
            ErrorCode::Unsupported,
            u"\"$\" is no iPhoto library: it has no \"%1\". Choose the library package, the folder "
            "that holds \"AlbumData.xml\" and \"Database\"."_s.arg(part));
        ASSERT_TRUE(QDir().rename(folder() + u"/aside"_s, path));
    }
    for (const QString& name : {u"Properties.apdb"_s, u"ImageProxies.apdb"_s}) {
        const QString path = package() + u"/Database/apdb/"_s + name;
        ASSERT_TRUE(QFile::rename(path, folder() + u"/aside"_s));
        expectRefusedHowever(ErrorCode::NotFound,
                             u"The library \"$\" is damaged: its database %1 is missing. Restore "
                             "the library from a backup."_s.arg(name));
        ASSERT_TRUE(QFile::rename(folder() + u"/aside"_s, path));
    }
    EXPECT_TRUE(isRead());
}

TEST_F(OpeningMessage, aLibraryOfAnotherProgramIsCalledSo)
{
    ASSERT_TRUE(QDir(package()).mkdir(u"Aperture.aplib"_s));
    ASSERT_TRUE(QFile::remove(package() + u"/AlbumData.xml"_s));
    expectRefusedHowever(ErrorCode::Unsupported,
                         u"The library \"$\" is an Aperture library. Only libraries of iPhoto '11 "
                         "(9.x) are supported."_s);
}

TEST_F(OpeningMessage, withoutAVersionThatFileIsToBeRestored)
{
    const QString info = package() + u"/Info.plist"_s;
    for (const QByteArray& bytes : {QByteArray("<plist version=\"1.0\"><dict/></plist>"),
                                    QByteArray("<plist version=\"1.0\"><array/></plist>"),
                                    QByteArray("torn")}) {
        put(info, bytes);
        expectRefusedHowever(ErrorCode::Damaged,
                             u"The library \"$\" does not say its version: \"$/Info.plist\" is "
                             "damaged. Restore it from a backup."_s);
    }
    ASSERT_TRUE(QFile::remove(info));
    expectRefusedHowever(ErrorCode::Damaged,
                         u"The library \"$\" has no \"Info.plist\", which tells its version: "
                         "restore that file from a backup."_s);
}

TEST_F(OpeningMessage, aDatabaseThatCannotBeOneIsNamed)
{
    for (const char* name : kThreeDatabases) {
        const QByteArray whole = content(database(name));
        const QString named =
            u"The database \"$/Database/apdb/%1\" "_s.arg(QLatin1StringView(name));
        const QString remedy = u": let iPhoto repair the library, or restore it from a backup."_s;
        put(database(name), QByteArray());
        expectRefusedHowever(ErrorCode::Damaged, named + u"is empty"_s + remedy);
        put(database(name), QByteArray(20000, 'x'));
        expectRefusedHowever(ErrorCode::Damaged,
                             named + u"is damaged (file is not a database)"_s + remedy);
        put(database(name), whole.first(whole.size() / 2));
        expectRefusedHowever(ErrorCode::Damaged,
                             named + u"is damaged (database disk image is malformed)"_s + remedy);
        put(database(name), whole);
    }
    EXPECT_TRUE(isRead());
}

TEST_F(OpeningMessage, contentThatIsNotOfIPhotoIsNamed)
{
    QMap<QString, QByteArray> sound;
    for (const char* name : kThreeDatabases) {
        sound.insert(database(name), content(database(name)));
    }
    const std::array refusals{
        SqlRefusal{"DROP TABLE RKFolder",
                   ErrorCode::Unsupported,
                   "The library \"$\" is of an unknown kind (no table RKFolder). Only libraries of "
                   "iPhoto '11 (9.x) are supported."},
        SqlRefusal{"DROP TABLE prop.RKIptcProperty",
                   ErrorCode::Damaged,
                   "The database \"$/Database/apdb/Properties.apdb\" lacks the table "
                   "RKIptcProperty: let iPhoto repair the library, or restore it from a backup."},
        SqlRefusal{
            "DROP TABLE prox.RKImageProxyState",
            ErrorCode::Damaged,
            "The database \"$/Database/apdb/ImageProxies.apdb\" lacks the table "
            "RKImageProxyState: let iPhoto repair the library, or restore it from a backup."},
        SqlRefusal{"UPDATE RKAdminData SET propertyValue='com.apple.Aperture' WHERE"
                   " propertyName='applicationIdentifier'",
                   ErrorCode::Unsupported,
                   "The library \"$\" is not one of iPhoto (its owner is \"com.apple.Aperture\"). "
                   "Only libraries of iPhoto '11 (9.x) are supported."},
        SqlRefusal{"UPDATE RKAdminData SET propertyValue='0' WHERE"
                   " propertyName='isIPhotoLibrary'",
                   ErrorCode::Unsupported,
                   "The library \"$\" is marked as no library of iPhoto. Only libraries of iPhoto "
                   "'11 (9.x) are supported."},
        SqlRefusal{"UPDATE RKAdminData SET propertyValue='109' WHERE propertyName='versionMajor'",
                   ErrorCode::Unsupported,
                   "The library \"$\" is of an unknown schema. Only libraries of iPhoto '11 (9.x) "
                   "are supported."},
        SqlRefusal{"INSERT INTO RKMaster(modelId,fileName) VALUES(1,'a/b.jpg')",
                   ErrorCode::Damaged,
                   "The library \"$\" names a photo's file \"a/b.jpg\", which is no file name. Let "
                   "iPhoto repair it, or restore it from a backup."},
    };
    for (const SqlRefusal& refusal : refusals) {
        change(refusal.sql);
        expectRefusedHowever(refusal.code, QString::fromLatin1(refusal.message));
        for (auto file = sound.cbegin(); file != sound.cend(); ++file) {
            put(file.key(), file.value());
        }
    }
    EXPECT_TRUE(isRead());
}

TEST_F(OpeningMessage, aSchemaThatIsOnlyReadSaysWhatIsStrangeAboutIt)
{
    QMap<QString, QByteArray> known;
    for (const char* name : kThreeDatabases) {
        known.insert(database(name), content(database(name)));
    }
    const QList<std::pair<const char*, QString>> strange{
        {"UPDATE RKAdminData SET propertyValue='219' WHERE propertyName='versionMinor'",
         u"schema 110.219"_s},
        {"UPDATE RKAdminData SET propertyValue='227' WHERE propertyName='versionMinor'",
         u"schema 110.227"_s},
        {"CREATE TRIGGER strange AFTER INSERT ON RKVersion BEGIN SELECT 1; END",
         u"a trigger or table of a foreign program, \"strange\""_s},
        {"CREATE TRIGGER prop.strange AFTER INSERT ON RKUniqueString BEGIN SELECT 1; END",
         u"a trigger or table of a foreign program, \"strange\""_s},
        {"CREATE TRIGGER prox.strange AFTER INSERT ON RKImageProxyState BEGIN SELECT 1; END",
         u"a trigger or table of a foreign program, \"strange\""_s},
        {"CREATE TABLE prox.strange(a /* VirtualReaderModule */)",
         u"a trigger or table of a foreign program, \"strange\""_s},
        {"DROP TABLE RKNote", u"its database has no table RKNote"_s},
        {"ALTER TABLE RKNote RENAME COLUMN note TO strange",
         u"its table RKNote lacks the column note"_s},
        {"ALTER TABLE prop.RKIptcProperty ADD COLUMN strange integer",
         u"its table RKIptcProperty has the unknown column strange"_s},
    };
    for (const auto& [sql, what] : strange) {
        change(sql);
        expectRefused(
            Access::Write,
            ErrorCode::Unsupported,
            u"The library \"$\" is not written to: its databases are of another kind than "
            "iPhoto 9.6 writes (%1). Open it in iPhoto 9.6 first."_s.arg(what));
        EXPECT_TRUE(isRead()) << sql;
        for (auto file = known.cbegin(); file != known.cend(); ++file) {
            put(file.key(), file.value());
        }
    }
}

TEST_F(OpeningMessage, aLibraryWithTablesOfAModuleThatOnlyIPhotoHasCanBeRead)
{
    auto connection = Connection::open(package(), Connection::Mode::Write);
    ASSERT_TRUE(connection.ok());
    SQLite::Database& database = connection.value()->database();
    sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    database.exec("PRAGMA writable_schema=ON;"
                  "INSERT INTO sqlite_master(type, name, tbl_name, rootpage, sql) VALUES('table',"
                  " 'strange', 'strange', 0, 'CREATE VIRTUAL TABLE strange USING"
                  " VirtualReaderModule(a, b)')");
    connection.value().reset();
    EXPECT_TRUE(isRead());
    expectRefused(Access::Write,
                  ErrorCode::Unsupported,
                  u"The library \"$\" is not written to: its databases are of another kind than "
                  "iPhoto 9.6 writes (a trigger or table of a foreign program, \"strange\"). Open "
                  "it in iPhoto 9.6 first."_s);
}

TEST_F(OpeningMessage, aPipeInThePlaceOfADatabaseHoldsNobodyUp)
{
    const QString database = package() + u"/Database/apdb/Properties.apdb"_s;
    ASSERT_TRUE(QFile::remove(database));
    ASSERT_EQ(::mkfifo(QFile::encodeName(database).constData(), 0444), 0);
    expectRefusedHowever(ErrorCode::Damaged,
                         u"The library \"$\" is damaged: its database Properties.apdb is no plain "
                         "file. Restore the library from a backup."_s);
}

TEST_F(OpeningMessage, anInfoThatIsNoFileOfItsKindIsNamedAtOnce)
{
    const QString info = package() + u"/Info.plist"_s;
    const auto expectDamaged = [this] {
        expectRefusedHowever(ErrorCode::Damaged,
                             u"The library \"$\" does not say its version: \"$/Info.plist\" is "
                             "damaged. Restore it from a backup."_s);
    };
    ASSERT_TRUE(QFile::remove(info));
    ASSERT_EQ(::mkfifo(QFile::encodeName(info).constData(), 0600), 0);
    expectDamaged();
    ASSERT_TRUE(QFile::remove(info));
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, info));
    expectDamaged();
}

TEST_F(OpeningMessage, whatMayNotBeReadOrEnteredIsNamed)
{
    const OrdinaryUser user({folder()});
    for (const mode_t mode : {0000, 0444, 0333}) {
        const WithPermissions closed(package(), mode);
        expectRefusedHowever(ErrorCode::Unreadable,
                             u"The library \"$\" cannot be read: check its permissions."_s);
    }
    const auto message = [](const QString& part) {
        return u"\"$/%1\" in the library \"$\" cannot be read: check its permissions."_s.arg(part);
    };
    for (const QString& part : {u"Database"_s, u"Database/apdb"_s}) {
        for (const mode_t mode : {0000, 0444, 0333}) {
            const WithPermissions closed(package() + u'/' + part, mode);
            expectRefusedHowever(ErrorCode::Unreadable, message(part));
        }
    }
    for (const QString& part : {u"Info.plist"_s,
                                u"Database/apdb/Library.apdb"_s,
                                u"Database/apdb/Properties.apdb"_s,
                                u"Database/apdb/ImageProxies.apdb"_s}) {
        const WithPermissions closed(package() + u'/' + part, 0222);
        expectRefusedHowever(ErrorCode::Unreadable, message(part));
    }
    EXPECT_TRUE(isRead());
}

TEST_F(OpeningMessage, whatAWriterMayWriteButNotReadIsNamedAndStopsNoReader)
{
    const OrdinaryUser user({folder()});
    for (const QString& part : {u"AlbumData.xml"_s, u"iLifeShared/AlbumData2.xml"_s}) {
        const WithPermissions closed(package() + u'/' + part, 0222);
        expectRefused(
            Access::Write,
            ErrorCode::Unreadable,
            u"\"$/%1\" in the library \"$\" cannot be read: check its permissions."_s.arg(part));
        EXPECT_TRUE(isRead());
    }
    for (const QString& part : {u"Masters"_s, u"Database/Versions"_s, u"Database/Albums"_s}) {
        const WithPermissions closed(package() + u'/' + part, 0333);
        expectRefused(
            Access::Write,
            ErrorCode::Unreadable,
            u"\"$/%1\" in the library \"$\" cannot be read: check its permissions."_s.arg(part));
        EXPECT_TRUE(isRead());
    }
}

TEST_F(OpeningMessage, whatMayNotBeWrittenIsNamedWithTheReasonAndStopsNoReader)
{
    const OrdinaryUser user({folder()});
    for (const QString& part : {u"Database/apdb"_s, u"AlbumData.xml"_s, u"Masters"_s}) {
        const WithPermissions closed(package() + u'/' + part, 0555);
        expectRefused(
            Access::Write,
            ErrorCode::NotWritable,
            u"The library \"$\" is not writable ($/%1: Permission denied). Change the "
            "permissions of \"$/%1\", or copy the library to where you may write."_s.arg(part));
        EXPECT_TRUE(isRead());
    }
}
