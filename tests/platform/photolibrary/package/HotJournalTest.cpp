#include "ChildProcess.h"
#include "Connection.h"
#include "FlushRecorder.h"
#include "HotJournals.h"
#include "LibraryBackups.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"
#include "WritableLibrary.h"

#include <QFileInfo>
#include <QMap>

#include <SQLiteCpp/SQLiteCpp.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>

using namespace Qt::StringLiterals;

namespace
{

constexpr std::array kDatabaseFiles{"Library.apdb", "Properties.apdb", "ImageProxies.apdb"};

} // namespace

/// A library whose databases are half-way through a transaction of a program that is no more.
class HotJournal : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(u"IMG_1.JPG"_s));
        ASSERT_TRUE(library->close().ok());
        m_before = databases(package());
    }

    [[nodiscard]] static QString database(const QString& package, const char* name)
    {
        return package + u"/Database/apdb/"_s + QLatin1StringView(name);
    }

    /// Bytes of the three. Nothing may have them open, and no journal may be left.
    [[nodiscard]] static QMap<QString, QByteArray> databases(const QString& package)
    {
        QMap<QString, QByteArray> bytes;
        for (const char* name : kDatabaseFiles) {
            QFile file(database(package, name));
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            bytes.insert(QString::fromLatin1(name), file.readAll());
        }
        return bytes;
    }

    [[nodiscard]] static QStringList journals(const QString& package)
    {
        const QDir folder(package + u"/Database/apdb"_s);
        return folder.entryList({u"*-journal"_s, u"*-mj*"_s}, QDir::Files, QDir::Name);
    }

    /// Changes all three databases so much that part of it is written over them before the end.
    static void changeHalfWay(const QString& package)
    {
        SQLite::Database database(
            QFile::encodeName(HotJournal::database(package, kDatabaseFiles[0])).toStdString(),
            SQLite::OPEN_READWRITE);
        for (std::size_t i = 1; i < kDatabaseFiles.size(); ++i) {
            SQLite::Statement attach(database,
                                     std::string("ATTACH ? AS ") + Connection::kSchemas[i]);
            const QString path = HotJournal::database(package, kDatabaseFiles[i]);
            attach.bind(1, QFile::encodeName(path).toStdString());
            attach.exec();
        }
        for (const std::string schema : Connection::kSchemas) {
            database.exec("PRAGMA " + schema + ".cache_size=5");
        }
        const std::string many = "WITH RECURSIVE n(i) AS (SELECT 100000 UNION ALL SELECT i+1 FROM n"
                                 " WHERE i<100100) ";
        database.exec("BEGIN IMMEDIATE;"
                      "UPDATE RKVersion SET name='spoilt';"
                      "UPDATE RKMaster SET fileName='..';"
                      "UPDATE prop.RKUniqueString SET stringProperty='spoilt '||modelId;"
                      "UPDATE prox.RKImageProxyState SET thumbnailPath='spoilt'");
        database.exec(many + "INSERT INTO main.RKNote(modelId,note) SELECT i,hex(zeroblob(8000))"
                             " FROM n");
        database.exec(many + "INSERT INTO prop.RKUniqueString(modelId,stringProperty)"
                             " SELECT i,hex(zeroblob(8000)) FROM n");
        database.exec(many + "INSERT INTO prox.RKImageProxyState(modelId,thumbnailPath)"
                             " SELECT i,hex(zeroblob(8000)) FROM n");
        ChildProcess::crash();
    }

    /// Leaves the library as that program left it.
    void leaveHalfWay() const
    {
        ChildProcess other([this](ChildProcess&) { changeHalfWay(package()); });
        ASSERT_TRUE(other.crashed());
        ASSERT_EQ(journals(package()),
                  (QStringList{u"ImageProxies.apdb-journal"_s,
                               u"Library.apdb-journal"_s,
                               u"Properties.apdb-journal"_s}));
        const QMap<QString, QByteArray> now = databases(package());
        for (const QString& name : now.keys()) {
            ASSERT_NE(now.value(name), m_before.value(name)) << name.toStdString();
        }
    }

    /// That the library at `path` opens and is, to the byte, what it was before the transaction.
    void expectUndoneByOpening(const QString& path, Access access) const
    {
        auto library = PhotoLibrary::open(path, {access, false});
        ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
        const Result<QList<PhotoFacts>> photos = library.value()->photos();
        ASSERT_TRUE(photos.ok()) << photos.error().message.toStdString();
        ASSERT_EQ(photos.value().size(), 1);
        EXPECT_EQ(photos.value().first().name, u"IMG_1"_s);
        EXPECT_EQ(photos.value().first().fileName, u"IMG_1.JPG"_s);
        const Result<LibrarySummary> summary = library.value()->summary();
        ASSERT_TRUE(summary.ok());
        EXPECT_EQ(summary.value().problems, QStringList());
        EXPECT_TRUE(library.value()->close().ok());
        EXPECT_EQ(journals(path), QStringList());
        EXPECT_TRUE(databases(path) == m_before);
    }

private:
    QMap<QString, QByteArray> m_before;
};

TEST_F(HotJournal, aTransactionThatWasCutOffIsUndoneByWhoeverOpensTheLibraryNext)
{
    for (const Access access : {Access::Read, Access::Write}) {
        leaveHalfWay();
        expectUndoneByOpening(package(), access);
    }
    expectSound();
}

TEST_F(HotJournal, undoingItIsNoChangeByAnotherProgram)
{
    leaveHalfWay();
    const QDir folder(package() + u"/Database/apdb"_s);
    for (const QString& name : folder.entryList(QDir::Files)) {
        std::filesystem::last_write_time(folder.filePath(name).toStdString(),
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::hours(1));
    }
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->warnings(), QStringList());
}

TEST_F(HotJournal, isNoneWhileSomebodyWritesIt)
{
    ChildProcess other([this](ChildProcess& self) {
        const auto databases = Connection::open(package(), Connection::Mode::Write);
        if (databases.ok()) {
            databases.value()->beginImmediate();
            databases.value()->database().exec("UPDATE RKVersion SET name = 'Lake'");
            self.stay();
        }
    });
    ASSERT_TRUE(other.stays());
    ASSERT_EQ(journals(package()), QStringList{u"Library.apdb-journal"_s});
    EXPECT_FALSE(HotJournals::areThere(package()));
    other.end();
    EXPECT_TRUE(HotJournals::areThere(package()));
}

TEST_F(HotJournal, aCopyTakenInTheMiddleOfATransactionIsWhatTheLibraryWasBeforeIt)
{
    leaveHalfWay();
    for (const Access access : {Access::Read, Access::Write}) {
        const QString copy = folder() + u"/Copy %1.photolibrary"_s.arg(static_cast<int>(access));
        std::filesystem::copy(package().toStdString(),
                              copy.toStdString(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::copy_symlinks);
        ASSERT_EQ(journals(copy).size(), 3);
        expectUndoneByOpening(copy, access);
    }
    EXPECT_EQ(journals(package()).size(), 3) << "opening a copy touched the original";
}

TEST_F(HotJournal, anUndoneLibraryTakesTheNextImport)
{
    leaveHalfWay();
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    import(*library, makePicture(u"IMG_2.JPG"_s));
    EXPECT_TRUE(library->close().ok());
    EXPECT_EQ(rows(u"RKMaster"_s), 2);
    expectSound();
}

TEST_F(HotJournal, whatCannotBeUndoneForLackOfPermissionIsNotReadHalfWay)
{
    leaveHalfWay();
    const OrdinaryUser user({folder()});
    const QString apdb = package() + u"/Database/apdb"_s;
    {
        const WithPermissions library(database(package(), kDatabaseFiles[0]), 0444);
        const WithPermissions properties(database(package(), kDatabaseFiles[1]), 0444);
        const WithPermissions proxies(database(package(), kDatabaseFiles[2]), 0444);
        const WithPermissions closed(apdb, 0555);
        const auto refused = PhotoLibrary::open(package(), {Access::Read, false});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::Unreadable);
        EXPECT_EQ(
            refused.error().message,
            u"A change to the library \"%1\" was interrupted and must be undone before it can "
            "be read, but its databases are write-protected: change the permissions of "
            "\"%2\", and do not move or copy the library before that is done."_s.arg(package(),
                                                                                     apdb));
        EXPECT_EQ(journals(package()).size(), 3);
    }
    expectUndoneByOpening(package(), Access::Read);
}

/// A library whose writer ended in the midst of a commit, which is done as soon as the
/// super-journal is gone that the three journals name by its path.
class CutOffCommit : public HotJournal
{
protected:
    /// Imports a second photo; its commit is cut off at the first flush that `isPoint` picks.
    void cutOffAt(const std::function<bool(const QString&)>& isPoint) const
    {
        const QString picture = makePicture(u"IMG_2.JPG"_s);
        ChildProcess writer([&](ChildProcess&) {
            const auto library = PhotoLibrary::open(package(), {Access::Write, false});
            FlushRecorder recorder;
            recorder.failWhere([&isPoint](const QString& path) {
                if (isPoint(path)) {
                    ChildProcess::crash();
                }
                return false;
            });
            const auto turn = library.value()->beginPhotoTurn();
            import(*library.value(), picture);
            turn->commit();
        });
        ASSERT_TRUE(writer.crashed());
    }

    void cutOffBeforeItIsDone() const
    {
        const QString second =
            QFileInfo(database(package(), kDatabaseFiles[1])).canonicalFilePath();
        cutOffAt([&second](const QString& path) { return path == second; });
        ASSERT_EQ(journals(package()).size(), 4) << "three journals and the super-journal";
    }

    [[nodiscard]] QString elsewhere() const { return folder() + u"/Elsewhere.photolibrary"_s; }
};

TEST_F(CutOffCommit, isNotTakenForDoneInAPackageThatWasMovedSince)
{
    cutOffBeforeItIsDone();
    const QString real = QFileInfo(package()).canonicalFilePath();
    ASSERT_TRUE(QDir().rename(package(), elsewhere()));
    const QMap<QString, QByteArray> halfWay = databases(elsewhere());
    const QStringList left = journals(elsewhere());
    for (const Access access : {Access::Read, Access::Write}) {
        const auto refused = PhotoLibrary::open(elsewhere(), {access, false});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::Unreadable);
        EXPECT_EQ(refused.error().message,
                  u"A change to the library \"%1\" was interrupted when the library was at \"%2\", "
                  "and can only be undone there: bring it back to that path, or mount its disk as "
                  "it was, and open it there once. Open it nowhere else before that."_s.arg(
                      elsewhere(), real));
        EXPECT_TRUE(databases(elsewhere()) == halfWay);
        EXPECT_EQ(journals(elsewhere()), left);
    }
    ASSERT_TRUE(QDir().rename(elsewhere(), package()));
    expectUndoneByOpening(package(), Access::Write);
    expectSound();
}

TEST_F(CutOffCommit, isUndoneInACopyWhileTheSuperJournalIsThereToTell)
{
    cutOffBeforeItIsDone();
    std::filesystem::copy(package().toStdString(),
                          elsewhere().toStdString(),
                          std::filesystem::copy_options::recursive);
    const auto copy = PhotoLibrary::open(elsewhere(), {Access::Write, false});
    ASSERT_TRUE(copy.ok()) << copy.error().message.toStdString();
    EXPECT_EQ(copy.value()->photos().value().size(), 1);
    EXPECT_TRUE(copy.value()->close().ok());
    expectUndoneByOpening(package(), Access::Write);
}

TEST_F(CutOffCommit, thatWasDoneIsDoneWhereverThePackageIsMoved)
{
    const QDir apdb(QFileInfo(package()).canonicalFilePath() + u"/Database/apdb"_s);
    cutOffAt([&apdb, committing = false](const QString& path) mutable {
        if (path != apdb.path()) {
            return false;
        }
        const bool wasCommitting = committing;
        committing = !apdb.entryList({u"*-mj*"_s}, QDir::Files).isEmpty();
        return wasCommitting && !committing;
    });
    ASSERT_EQ(journals(package()).size(), 3);
    ASSERT_TRUE(QDir().rename(package(), elsewhere()));
    const auto opened = PhotoLibrary::open(elsewhere(), {Access::Read, false});
    ASSERT_TRUE(opened.ok()) << opened.error().message.toStdString();
    EXPECT_EQ(opened.value()->photos().value().size(), 2);
    EXPECT_EQ(opened.value()->summary().value().problems, QStringList());
}

/// Journals that no transaction needs any more.
class DeadJournal : public WritableLibrary
{
protected:
    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(apdb() + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    void putJournalThatNamesADevice() const
    {
        const QByteArray device("/dev/null");
        quint32 sum = 0;
        for (const char character : device) {
            sum += static_cast<quint32>(character);
        }
        const auto hex = [](quint32 number) {
            return QByteArray::number(number, 16).rightJustified(8, '0');
        };
        const QByteArray bytes =
            QByteArray(64, 'x') + device +
            QByteArray::fromHex(hex(static_cast<quint32>(device.size())) + hex(sum) +
                                "d9d505f920a163d7"); // SQLite's mark
        put(u"Library.apdb-journal"_s, bytes);
    }

    [[nodiscard]] bool isThere(const QString& name) const { return QFile::exists(apdb() + name); }

    [[nodiscard]] QString apdb() const { return package() + u"/Database/apdb/"_s; }
};

TEST_F(DeadJournal, aWriterClearsThemAwayAndAReaderDoesNot)
{
    const QString journal = u"Library.apdb-journal"_s;
    const QString super = u"Library.apdb-mj0A1B2C3D4"_s;
    put(journal, QByteArray(512, '\0')); // as a commit leaves it whose end was not written any more
    put(super, QFile::encodeName(apdb() + u"Properties.apdb-journal"_s) + '\0');
    EXPECT_TRUE(open(Access::Read)->close().ok());
    EXPECT_TRUE(isThere(journal));
    EXPECT_TRUE(isThere(super));
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(isThere(journal));
    EXPECT_FALSE(isThere(super));
    expectSound();
}

TEST_F(DeadJournal, whatDecidesAboutAnotherDatabaseStays)
{
    // As long as one of the journals that it lists is there, it says whether that one counts.
    const QString super = u"Library.apdb-mj0A1B2C3D4"_s;
    const QString other = u"Faces.db-journal"_s;
    put(other, QByteArray(512, '\1'));
    put(super,
        QFile::encodeName(apdb() + u"Library.apdb-journal"_s) + '\0' +
            QFile::encodeName(apdb() + other) + '\0');
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(isThere(super));
    EXPECT_TRUE(isThere(other));
    ASSERT_TRUE(QFile::remove(apdb() + other));
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_FALSE(isThere(super));
}

TEST_F(DeadJournal, whatIsTooLargeToNameJournalsStays)
{
    const QString super = u"Library.apdb-mj0A1B2C3D4"_s;
    put(super, {});
    ASSERT_TRUE(QFile::resize(apdb() + super, qint64{100} * 1024 * 1024 * 1024));
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(isThere(super));
}

TEST_F(DeadJournal, aPipeThatIsCalledOneHoldsNobodyUp)
{
    const QString journal = QFileInfo(apdb()).canonicalFilePath() + u"/Library.apdb-journal"_s;
    ASSERT_EQ(::mkfifo(QFile::encodeName(journal).constData(), 0600), 0);
    for (const Access access : {Access::Read, Access::Write}) {
        const auto refused = PhotoLibrary::open(package(), {access, false});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::Unreadable);
        EXPECT_EQ(
            refused.error().message,
            u"\"%1\" in the library \"%2\" is no plain file: remove it."_s.arg(journal, package()));
    }
}

TEST_F(DeadJournal, aDeviceThatAJournalNamesIsNotToBeRemoved)
{
    putJournalThatNamesADevice();
    const QString journal = QFileInfo(apdb()).canonicalFilePath() + u"/Library.apdb-journal"_s;
    for (const Access access : {Access::Read, Access::Write}) {
        const auto refused = PhotoLibrary::open(package(), {access, false});
        ASSERT_FALSE(refused.ok());
        EXPECT_EQ(refused.error().code, ErrorCode::Unreadable);
        EXPECT_EQ(refused.error().message,
                  u"\"%1\" in the library \"%2\" names \"/dev/null\", which is no plain file: "
                  "move the journal out of the library, then go back to a backup."_s.arg(
                      journal, package()));
    }
}

TEST_F(DeadJournal, thatNamesADeviceIsMovedOutBeforeTheLibraryGoesBackToABackup)
{
    const Result<LibraryBackup> backup = LibraryBackups::make(package());
    ASSERT_TRUE(backup.ok()) << backup.error().message.toStdString();
    putJournalThatNamesADevice();
    const QString date = backup.value().name;
    EXPECT_EQ(LibraryBackups::restore(package(), date, false).error().code, ErrorCode::Unreadable);
    ASSERT_TRUE(QFile::rename(apdb() + u"Library.apdb-journal"_s, folder() + u"/moved out"_s));
    const auto restored = LibraryBackups::restore(package(), date, false);
    EXPECT_TRUE(restored.ok()) << restored.error().message.toStdString();
    expectSound();
}
