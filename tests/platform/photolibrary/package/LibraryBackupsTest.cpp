#include "LibraryBackups.h"

#include "Connection.h"
#include "DamagedLibrary.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <SQLiteCpp/Database.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// A library and the backup of it, from which it then differs.
class LibraryBackupsTest : public DamagedLibrary
{
protected:
    [[nodiscard]] LibraryBackup make() const
    {
        const Result<LibraryBackup> made = LibraryBackups::make(package());
        EXPECT_TRUE(made.ok()) << made.error().message.toStdString();
        return made.ok() ? made.value() : LibraryBackup();
    }

    [[nodiscard]] Result<LibraryBackups::Restored> restore(const QString& date) const
    {
        return LibraryBackups::restore(package(), date, false);
    }

    /// Takes a photo into the library; returns its original, relative to Masters.
    [[nodiscard]] QString takePhoto() const
    {
        const auto library = open(Access::Write);
        import(*library, makePicture(u"Later.jpg"_s));
        EXPECT_TRUE(library->close().ok());
        return ask(u"SELECT imagePath FROM RKMaster WHERE fileName='Later.jpg'"_s);
    }

    [[nodiscard]] QStringList names() const
    {
        const Result<QList<LibraryBackup>> backups = LibraryBackups::list(package());
        EXPECT_TRUE(backups.ok()) << backups.error().message.toStdString();
        QStringList names;
        for (const LibraryBackup& backup :
             backups.ok() ? backups.value() : QList<LibraryBackup>()) {
            names += backup.name;
        }
        return names;
    }

    [[nodiscard]] QByteArray native(const QString& relativePath) const
    {
        return QFile::encodeName(package() + u'/' + relativePath);
    }

    /// Whether this user may do so.
    [[nodiscard]] bool giveTo(const QString& relativePath, uid_t owner, gid_t group) const
    {
        return ::chown(native(relativePath).constData(), owner, group) == 0;
    }

    [[nodiscard]] struct stat statusOf(const QString& relativePath) const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(native(relativePath).constData(), &status), 0);
        return status;
    }

    /// Names of all files in a folder and those within it, sorted.
    [[nodiscard]] static QStringList namesBelow(const QString& folder)
    {
        QStringList names;
        QDirIterator walk(folder, QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            walk.next();
            names += walk.fileName();
        }
        names.sort();
        EXPECT_FALSE(names.isEmpty()) << folder.toStdString();
        return names;
    }

    /// That nothing of a restore is left in the package.
    void expectSwept() const
    {
        EXPECT_FALSE(QFileInfo::exists(package() + u"/.corvane-restore"_s));
        EXPECT_FALSE(QFileInfo::exists(package() + u"/Database/.corvane-restore"_s));
    }
};

TEST_F(LibraryBackupsTest, theyAreListedWithWhatTheyKnowTheOldestFirst)
{
    const QStringList before = names();
    const LibraryBackup first = make();
    const LibraryBackup second = make();
    EXPECT_EQ(names(), before + QStringList({first.name, second.name}));
    EXPECT_EQ(first.photos, 3);
    EXPECT_GT(first.bytes, 100000);
    EXPECT_TRUE(QFileInfo::exists(first.path + u"/Database/apdb/Library.apdb"_s));
    EXPECT_LT(first.moment, second.moment);
}

TEST_F(LibraryBackupsTest, aLibraryThatIsOpenForWritingBacksItselfUp)
{
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(LibraryBackups::make(package()).error().code, ErrorCode::InUse);
    const QStringList before = names();
    const Result<QString> made = library->backUp();
    ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
    const LibraryBackup backup = LibraryBackups::at(made.value());
    EXPECT_EQ(names(), before + QStringList{backup.name});
    EXPECT_EQ(backup.path, made.value());
    EXPECT_EQ(backup.photos, 3);
    const auto reading = open(Access::Read);
    ASSERT_NE(reading, nullptr);
    EXPECT_EQ(reading->backUp().error().code, ErrorCode::NotWritable);
}

TEST_F(LibraryBackupsTest, theFolderOfTheCopiesIsKnownBeforeThereIsOne)
{
    const Result<QString> folder = LibraryBackups::folder(package());
    ASSERT_TRUE(folder.ok()) << folder.error().message.toStdString();
    EXPECT_EQ(QFileInfo(make().path).path(), folder.value());
    EXPECT_EQ(LibraryBackups::folder(package() + u"/Masters"_s).error().code,
              ErrorCode::Unsupported);
}

TEST_F(LibraryBackupsTest, aRestoredLibraryIsAsItWas)
{
    const LibraryBackup backup = make();
    const PackageState then = state();
    execute(u"UPDATE RKVersion SET name='Other'"_s);
    remove(u"AlbumData.xml"_s);
    remove(fileIn(u"Database/Versions"_s, u"Master.apmaster"_s));
    write(u"Database/Albums/new.apalbum"_s, "new");
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    EXPECT_TRUE(QFileInfo(package() + u"/Database/Library.apdb"_s).isSymLink());
    EXPECT_EQ(findings(), QStringList());
    EXPECT_TRUE(restored.value().kept.isEmpty());
    expectSwept();
}

TEST_F(LibraryBackupsTest, aRestoreIsNoChangeByAnotherProgram)
{
    const LibraryBackup backup = make();
    ASSERT_TRUE(restore(backup.name).ok());
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->warnings(), QStringList());
}

TEST_F(LibraryBackupsTest, whatIsThereIsBackedUpBeforeAndCanBeHadBack)
{
    const LibraryBackup backup = make();
    const QString later = takePhoto();
    const PackageState before = state();
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(rows(u"RKMaster"_s), 4);
    const Result<LibraryBackups::Restored> back =
        restore(QFileInfo(restored.value().before).fileName());
    ASSERT_TRUE(back.ok()) << back.error().message.toStdString();
    EXPECT_EQ(rows(u"RKMaster"_s), 5);
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryBackupsTest, databasesBehindLinksAreInTheCopy)
{
    const QString databases = package() + u"/Database/apdb"_s;
    const QString elsewhere = folder() + u"/databases"_s;
    ASSERT_TRUE(QDir().rename(databases, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, databases));
    EXPECT_EQ(make().photos, 3);
    ASSERT_TRUE(QFile::remove(databases));
    ASSERT_TRUE(QDir().rename(elsewhere, databases));
    const QString library = databases + u"/Library.apdb"_s;
    ASSERT_TRUE(QFile::rename(library, folder() + u"/Library.apdb"_s));
    ASSERT_TRUE(QFile::link(folder() + u"/Library.apdb"_s, library));
    const LibraryBackup backup = make();
    EXPECT_EQ(backup.photos, 3);
    EXPECT_FALSE(QFileInfo(backup.path + u"/Database/apdb/Library.apdb"_s).isSymLink());
}

TEST_F(LibraryBackupsTest, sidecarsBehindALinkedFolderAreInTheCopyAndNotReplaced)
{
    const QString elsewhere = folder() + u"/elsewhere"_s;
    for (const QString& linked :
         {u"Database/Versions"_s, u"Database/Albums"_s, u"Database/Folders"_s}) {
        const QString path = package() + u'/' + linked;
        ASSERT_TRUE(QDir().rename(path, elsewhere));
        ASSERT_TRUE(QFile::link(elsewhere, path));
        const LibraryBackup backup = make();
        EXPECT_EQ(namesBelow(backup.path + u'/' + linked), namesBelow(elsewhere));
        const Result<LibraryBackups::Restored> refused = restore(backup.name);
        ASSERT_FALSE(refused.ok()) << linked.toStdString();
        EXPECT_TRUE(refused.error().message.contains("in the place of the link"_L1));
        ASSERT_TRUE(QFile::remove(path));
        ASSERT_TRUE(QDir().rename(elsewhere, path));
        EXPECT_TRUE(restore(backup.name).ok());
    }
}

TEST_F(LibraryBackupsTest, theSecondOldestOfFourIsRestoredWithItsCatalogue)
{
    static_cast<void>(make());
    execute(u"UPDATE RKVersion SET name='Then'"_s);
    static_cast<void>(repair());
    const LibraryBackup chosen = make();
    const PackageState then = state();
    execute(u"UPDATE RKVersion SET name='Now'"_s);
    static_cast<void>(repair());
    static_cast<void>(make());
    while (names().indexOf(chosen.name) != 1 || names().size() != 4) {
        ASSERT_TRUE(names().contains(chosen.name));
        static_cast<void>(make());
    }
    const Result<LibraryBackups::Restored> restored = restore(chosen.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    EXPECT_EQ(restored.value().lagging, QStringList());
    EXPECT_TRUE(names().contains(chosen.name)) << "it can be chosen once more";
}

TEST_F(LibraryBackupsTest, aCatalogueThatTheCopyDoesNotHoldIsMadeAnewOrTold)
{
    const LibraryBackup backup = make();
    ASSERT_TRUE(QFile::remove(backup.path + u"/AlbumData.xml"_s));
    execute(u"UPDATE RKVersion SET name='Now'"_s);
    static_cast<void>(repair());
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(restored.value().lagging, QStringList());
    EXPECT_EQ(findings(), QStringList());
    const QString damaged = package() + u"/AlbumData.xml"_s;
    write(u"AlbumData.xml"_s, "torn");
    const Result<LibraryBackups::Restored> again = restore(backup.name);
    ASSERT_TRUE(again.ok()) << again.error().message.toStdString();
    ASSERT_EQ(again.value().lagging.size(), 1);
    EXPECT_TRUE(again.value().lagging.first().contains(damaged));
}

TEST_F(LibraryBackupsTest, aCatalogueThatCannotFollowDoesSoAtTheNextRunThatWrites)
{
    const LibraryBackup backup = make();
    static_cast<void>(takePhoto());
    const QString catalogue = u"iLifeShared/AlbumData2.xml"_s;
    remove(catalogue);
    const QString obstacle = package() + u'/' + catalogue + u"/a folder"_s;
    ASSERT_TRUE(QDir().mkpath(obstacle));
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    ASSERT_EQ(restored.value().lagging.size(), 1);
    EXPECT_TRUE(restored.value().lagging.first().contains(catalogue));
    EXPECT_FALSE(QFileInfo::exists(package() + u"/.corvane-restore"_s));
    ASSERT_TRUE(QDir(package() + u'/' + catalogue).removeRecursively());
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(findings().filter(u"AlbumData2"_s), QStringList());
    expectSwept();
}

TEST_F(LibraryBackupsTest, thatTheFilesThatAreKeptCannotBeListedIsTold)
{
    const LibraryBackup backup = make();
    {
        SQLite::Database database((backup.path + u"/Database/apdb/Library.apdb"_s).toStdString(),
                                  SQLite::OPEN_READWRITE);
        database.exec("DROP TABLE RKMaster");
    }
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(restored.value().kept, QStringList());
    ASSERT_EQ(restored.value().lagging.size(), 1);
    EXPECT_TRUE(restored.value().lagging.first().contains("is not known"_L1));
}

TEST_F(LibraryBackupsTest, aRestoreKeepsWhoseFilesAreAndWhoMayReadThem)
{
    const LibraryBackup backup = make();
    const QString library = u"Database/apdb/Library.apdb"_s;
    const QString folderOfAlbums = u"Database/Albums"_s;
    const QString gone = u"Database/Keywords.plist"_s;
    const bool mayChown = giveTo(library, 4321, 1234) && giveTo(folderOfAlbums, 4321, 1234) &&
                          giveTo(u"Database"_s, 4322, 1235);
    ASSERT_EQ(::chmod(native(library).constData(), 0660), 0);
    ASSERT_EQ(::chmod(native(folderOfAlbums).constData(), 02770), 0);
    const bool hasAttributes =
        ::setxattr(native(library).constData(), "user.tag", "red", 3, 0) == 0;
    remove(gone);
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    for (const QString& path : {library, folderOfAlbums}) {
        EXPECT_EQ(statusOf(path).st_uid, mayChown ? 4321U : ::getuid());
        EXPECT_EQ(statusOf(path).st_gid, mayChown ? 1234U : ::getgid());
    }
    EXPECT_EQ(statusOf(library).st_mode & 07777U, 0660U);
    EXPECT_EQ(statusOf(folderOfAlbums).st_mode & 07777U, 02770U);
    EXPECT_EQ(statusOf(gone).st_uid, mayChown ? 4322U : ::getuid());
    char value[8] = {};
    EXPECT_EQ(::getxattr(native(library).constData(), "user.tag", value, sizeof(value)),
              hasAttributes ? 3 : -1);
}

TEST_F(LibraryBackupsTest, databasesBehindALinkAreNotReplaced)
{
    const LibraryBackup backup = make();
    execute(u"UPDATE RKVersion SET name='Now'"_s);
    const PackageState before = state();
    for (const QString& linked :
         {u"Database"_s, u"Database/apdb"_s, u"Database/apdb/Library.apdb"_s}) {
        const QString path = package() + u'/' + linked;
        const QString elsewhere = folder() + u"/elsewhere"_s;
        ASSERT_TRUE(QDir().rename(path, elsewhere));
        ASSERT_TRUE(QFile::link(elsewhere, path));
        const Result<LibraryBackups::Restored> refused = restore(backup.name);
        ASSERT_FALSE(refused.ok()) << linked.toStdString();
        EXPECT_EQ(refused.error().code, ErrorCode::NotWritable);
        EXPECT_TRUE(refused.error().message.contains(path));
        EXPECT_TRUE(refused.error().message.contains("in the place of the link"_L1));
        EXPECT_TRUE(QFileInfo(path).isSymLink());
        ASSERT_TRUE(QFile::remove(path));
        ASSERT_TRUE(QDir().rename(elsewhere, path));
        expectSwept();
    }
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryBackupsTest, photosThatTheOlderDatabasesDoNotKnowAreKeptAndTold)
{
    const LibraryBackup backup = make();
    const QStringList before = pictureFiles();
    const QString later = takePhoto();
    const QStringList with = pictureFiles();
    ASSERT_GT(with.size(), before.size());
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(restored.value().kept, QStringList{u"Masters/"_s + later});
    EXPECT_EQ(pictureFiles(), with);
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(pictureFiles(), with) << "the next run that writes removed them";
}

TEST_F(LibraryBackupsTest, anUnfinishedTurnIsForgottenSoThatItsFilesAreNotSweptLater)
{
    const LibraryBackup backup = make();
    const QStringList notes =
        QDir(folder() + u"/state/corvane/libraries"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(notes.size(), 1);
    const QString later = takePhoto();
    // As a run leaves it that ended between its commit and its end.
    QFile journal(folder() + u"/state/corvane/libraries/"_s + notes.first() + u"/journal"_s);
    ASSERT_TRUE(journal.open(QIODevice::WriteOnly));
    journal.write("{\"turn\":99,\"made\":[\"Masters/" + later.toUtf8() + "\"]}\n");
    journal.close();
    ASSERT_TRUE(restore(backup.name).ok());
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(QFileInfo::exists(package() + u"/Masters/"_s + later));
}

TEST_F(LibraryBackupsTest, aChangeByAnotherProgramAMomentBeforeIsAWarningAndAnOwnOneNone)
{
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(LibraryBackups::warnings(package()), QStringList());
    execute(u"UPDATE RKVersion SET name='Other'"_s);
    const QStringList warnings = LibraryBackups::warnings(package());
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings.first().contains("changed within the last minute"_L1));
}

TEST_F(LibraryBackupsTest, aDateMayBeTheBeginOfJustOne)
{
    const LibraryBackup backup = make();
    const QString day = backup.moment.toString(u"yyyy-MM-dd"_s);
    const QString exact = backup.moment.toString(u"yyyy-MM-dd HH:mm:ss.zzz"_s);
    EXPECT_TRUE(restore(exact).ok());
    const Result<LibraryBackups::Restored> many = restore(day);
    ASSERT_FALSE(many.ok());
    EXPECT_TRUE(many.error().message.contains("more than one backup"_L1));
    const Result<LibraryBackups::Restored> none = restore(u"1999"_s);
    ASSERT_FALSE(none.ok());
    EXPECT_EQ(none.error().code, ErrorCode::NotFound);
    EXPECT_FALSE(restore(u"latest"_s).ok());
}

TEST_F(LibraryBackupsTest, aLibraryThatAnotherProgramHasOpenIsNotRestored)
{
    const LibraryBackup backup = make();
    const PackageState before = state();
    {
        const auto ours = open(Access::Write);
        const Result<LibraryBackups::Restored> refused = restore(backup.name);
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::InUse);
    }
    {
        const auto reader = Connection::open(package(), Connection::Mode::Read);
        ASSERT_TRUE(reader.ok());
        reader.value()->database().exec("BEGIN; SELECT count(*) FROM RKMaster");
        const Result<LibraryBackups::Restored> refused = restore(backup.name);
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::InUse);
    }
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
}

TEST_F(LibraryBackupsTest, whereIPhotoDidNotCloseTheLibraryItMustBeSaid)
{
    const LibraryBackup backup = make();
    execute(u"UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'"_s);
    const Result<LibraryBackups::Restored> refused = restore(backup.name);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::NotClosed);
    EXPECT_TRUE(LibraryBackups::restore(package(), backup.name, true).ok());
}

TEST_F(LibraryBackupsTest, damagedAndMissingDatabasesAreRestoredToo)
{
    const LibraryBackup backup = make();
    const PackageState then = state();
    write(u"Database/apdb/Library.apdb"_s, "no database at all");
    EXPECT_EQ(names().count(backup.name), 1);
    ASSERT_TRUE(restore(backup.name).ok());
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    remove(u"Database/apdb/Properties.apdb"_s);
    remove(u"Info.plist"_s);
    ASSERT_TRUE(restore(backup.name).ok());
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    remove(u"Database/apdb/Library.apdb"_s);
    ASSERT_EQ(::mkfifo(native(u"Database/apdb/Library.apdb"_s).constData(), 0600), 0);
    ASSERT_TRUE(restore(backup.name).ok()) << "it does not wait at a pipe";
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    remove(u"Database/apdb/Properties.apdb"_s);
    ASSERT_TRUE(QDir().mkpath(package() + u"/Database/apdb/Properties.apdb/folder"_s));
    ASSERT_TRUE(restore(backup.name).ok());
    EXPECT_EQ(then.differenceTo(state()).toStdString(), "");
    ASSERT_TRUE(QDir().rename(package() + u"/Database"_s, folder() + u"/taken away"_s));
    const Result<LibraryBackups::Restored> restored = restore(backup.name);
    ASSERT_TRUE(restored.ok()) << restored.error().message.toStdString();
    EXPECT_EQ(rows(u"RKMaster"_s), 4);
}

TEST_F(LibraryBackupsTest, aDamagedBackupIsNotPutInPlace)
{
    const LibraryBackup backup = make();
    const PackageState before = state();
    QFile database(backup.path + u"/Database/apdb/Properties.apdb"_s);
    ASSERT_TRUE(database.open(QIODevice::ReadWrite));
    ASSERT_TRUE(database.resize(database.size() / 2));
    database.close();
    const Result<LibraryBackups::Restored> refused = restore(backup.name);
    ASSERT_FALSE(refused.ok());
    EXPECT_EQ(refused.error().code, ErrorCode::Damaged);
    EXPECT_TRUE(refused.error().message.contains("Choose another one"_L1));
    EXPECT_EQ(before.differenceTo(state()).toStdString(), "");
    expectSwept();
}

TEST_F(LibraryBackupsTest, aFolderOfTheSameNameThatIsNotOursIsLeft)
{
    const LibraryBackup backup = make();
    write(u".corvane-restore/Mine.jpg"_s, "somebody's only copy");
    EXPECT_FALSE(restore(backup.name).ok());
    EXPECT_TRUE(QFileInfo::exists(package() + u"/.corvane-restore/Mine.jpg"_s));
    ASSERT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(QFileInfo::exists(package() + u"/.corvane-restore/Mine.jpg"_s));
}

TEST_F(LibraryBackupsTest, whatIsNoLibraryHasNone)
{
    ASSERT_TRUE(QDir().mkpath(folder() + u"/empty"_s));
    for (const QString& path : {folder() + u"/empty"_s, folder() + u"/nothing"_s}) {
        EXPECT_FALSE(LibraryBackups::make(path).ok());
        EXPECT_FALSE(LibraryBackups::list(path).ok());
        EXPECT_FALSE(LibraryBackups::restore(path, u"2026"_s, false).ok());
        EXPECT_FALSE(QFileInfo::exists(path + u"/Database"_s));
    }
}
