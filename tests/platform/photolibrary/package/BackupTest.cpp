#include "Backup.h"

#include "Connection.h"
#include "FlushRecorder.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"
#include "Queries.h"
#include "WritableLibrary.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

using namespace Qt::StringLiterals;

namespace
{

/// The finished and unfinished copies, and whatever else is in a folder of backups, by name.
QStringList namesIn(const QString& backups)
{
    return QDir(backups).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                   QDir::Name);
}

/// How many photos' files the databases in a package, or in the copy of one, know.
qint64 mastersIn(const QString& copy)
{
    auto connection = Connection::open(copy, Connection::Mode::Read);
    EXPECT_TRUE(connection.ok()) << connection.error().message.toStdString();
    return connection.ok() ? Sql::firstInteger(*connection.value(), "SELECT count(*) FROM RKMaster")
                                 .value_or(-1)
                           : -1;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

} // namespace

/// The dated copies of a library.
class BackupsOfALibrary : public WritableLibrary
{
protected:
    void SetUp() override
    {
        WritableLibrary::SetUp();
        qputenv("XDG_STATE_HOME", QFile::encodeName(folder() + u"/state"_s));
    }

    void TearDown() override { qunsetenv("XDG_STATE_HOME"); }

    [[nodiscard]] QString ownFolder() const { return folder() + u"/backups"_s; }

    /// Makes copies one after the other; returns their names.
    [[nodiscard]] QStringList make(int count) const
    {
        QStringList names;
        for (int i = 0; i < count; ++i) {
            const Result<QString> made = Backup::make(package(), ownFolder());
            EXPECT_TRUE(made.ok()) << made.error().message.toStdString();
            names << (made.ok() ? QFileInfo(made.value()).fileName() : QString());
        }
        return names;
    }

    /// A run of the program that imports as many pictures into the package.
    void runWith(const QString& package, int pictures) const
    {
        auto library = PhotoLibrary::open(package, {Access::Write, false});
        ASSERT_TRUE(library.ok()) << library.error().message.toStdString();
        for (int i = 0; i < pictures; ++i) {
            import(*library.value(), makePicture(u"IMG_%1.JPG"_s.arg(i)));
        }
        ASSERT_TRUE(library.value()->close().ok());
    }

    /// The folders of backups that runs have made, one a library.
    [[nodiscard]] QStringList folders() const
    {
        const QString all = folder() + u"/state/corvane/backups"_s;
        QStringList paths;
        for (const QString& name : namesIn(all)) {
            paths << all + u'/' + name;
        }
        return paths;
    }

    /// For each copy of a folder, oldest first, how many photos it knows.
    [[nodiscard]] static QList<qint64> mastersOfCopies(const QString& backups)
    {
        QList<qint64> counts;
        for (const QString& name : namesIn(backups)) {
            counts << mastersIn(backups + u'/' + name);
        }
        return counts;
    }
};

TEST_F(BackupsOfALibrary, theFirstEverAndTheLastThreeAreKept)
{
    QStringList made = make(4);
    EXPECT_EQ(namesIn(ownFolder()), made);
    for (int more = 0; more < 3; ++more) {
        made << make(1);
        EXPECT_EQ(namesIn(ownFolder()), QStringList{made.first()} + made.last(3));
    }
}

TEST_F(BackupsOfALibrary, aDatabaseThatItsCopyHasNoRoomForIsToldByTheNameOfTheCopy)
{
    const qint64 size = QFileInfo(package() + u"/Database/apdb/Library.apdb"_s).size();
    // A limit on file sizes fails a write as a full disk does.
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {.rlim_cur = static_cast<rlim_t>(size - 1), .rlim_max = before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const Result<QString> made = Backup::make(package(), ownFolder());
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);

    ASSERT_FALSE(made.ok());
    EXPECT_TRUE(
        made.error().message.contains(u".unfinished/Database/apdb/Library.apdb\" cannot be"_s))
        << made.error().message.toStdString();
    EXPECT_TRUE(namesIn(ownFolder()).isEmpty());
}

TEST_F(BackupsOfALibrary, aCopyIsFlushedWholeBeforeItBearsItsName)
{
    const FlushRecorder recorder;
    const Result<QString> made = Backup::make(package(), ownFolder());
    ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
    const QString copy = QFileInfo(made.value()).canonicalFilePath();
    EXPECT_TRUE(recorder.flushed().contains(copy + u".unfinished"_s));
    EXPECT_TRUE(recorder.flushed().contains(QFileInfo(copy).path()));
}

TEST_F(BackupsOfALibrary, theDatabasesOfACopyAreFlushedOneByOne)
{
    const FlushRecorder recorder;
    const Result<QString> made = Backup::make(package(), ownFolder());
    ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
    const QString copy = QFileInfo(made.value()).canonicalFilePath();
    const QStringList databases =
        QDir(copy + u"/Database/apdb"_s).entryList(QDir::Files | QDir::Hidden);
    ASSERT_TRUE(databases.contains(u"Library.apdb"_s));
    for (const QString& name : databases) {
        EXPECT_TRUE(recorder.flushed().contains(copy + u".unfinished/Database/apdb/"_s + name))
            << name.toStdString();
    }
}

TEST_F(BackupsOfALibrary, aCopyThatCannotBeFlushedIsNone)
{
    FlushRecorder recorder;
    recorder.failWhere([](const QString& path) { return path.endsWith(u".unfinished"_s); });
    const Result<QString> made = Backup::make(package(), ownFolder());
    ASSERT_FALSE(made.ok());
    EXPECT_TRUE(made.error().message.contains(u"No backup of the databases"_s))
        << made.error().message.toStdString();
    EXPECT_EQ(namesIn(ownFolder()), QStringList());
}

TEST_F(BackupsOfALibrary, aClockThatWasSetBackCostsNeitherTheFirstNorTheNewest)
{
    QStringList names{u"20990101-000000-000"_s,
                      u"20990101-000000-001"_s,
                      u"20990101-000000-002"_s,
                      u"20990101-000000-003"_s};
    for (const QString& name : std::as_const(names)) {
        ASSERT_TRUE(QDir().mkpath(ownFolder() + u'/' + name));
    }
    names << make(2);
    EXPECT_EQ(namesIn(ownFolder()), QStringList{names.first()} + names.last(3));
    EXPECT_TRUE(QFileInfo::exists(ownFolder() + u'/' + names.last() + u"/AlbumData.xml"_s));
}

TEST_F(BackupsOfALibrary, aCopyThatACrashCutOffGoesWithTheNextOne)
{
    const QString cutOff = ownFolder() + u"/20200101-000000-000.unfinished"_s;
    ASSERT_TRUE(QDir().mkpath(cutOff + u"/Database"_s));
    const QStringList made = make(1);
    EXPECT_EQ(namesIn(ownFolder()), made);
}

TEST_F(BackupsOfALibrary, aFolderOfAnotherNameIsNoneOfTheLast)
{
    ASSERT_TRUE(QDir().mkpath(ownFolder() + u"/zzz"_s));
    QStringList made = make(5);
    EXPECT_EQ(namesIn(ownFolder()),
              QStringList{made.first()} + made.last(3) + QStringList{u"zzz"_s});
}

TEST_F(BackupsOfALibrary, ofRunsThatWriteTheStatesBeforeTheFirstAndTheLastThreeAreKept)
{
    for (int run = 0; run < 6; ++run) {
        runWith(package(), 1);
    }
    ASSERT_EQ(folders().size(), 1);
    EXPECT_EQ(mastersOfCopies(folders().first()), (QList<qint64>{0, 3, 4, 5}));
}

TEST_F(BackupsOfALibrary, eachLibraryHasThemForItselfEvenACopyOfAnother)
{
    for (int run = 0; run < 5; ++run) {
        runWith(package(), 1);
    }
    ASSERT_EQ(folders().size(), 1);
    const QString ofTheFirst = folders().first();
    const QStringList before = namesIn(ofTheFirst);
    const QString copy = folder() + u"/Copy.photolibrary"_s;
    std::filesystem::copy(package().toStdString(),
                          copy.toStdString(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::copy_symlinks);
    for (int run = 0; run < 5; ++run) {
        runWith(copy, 1);
    }
    EXPECT_EQ(namesIn(ofTheFirst), before);
    EXPECT_EQ(mastersOfCopies(ofTheFirst), (QList<qint64>{0, 2, 3, 4}));
    QStringList both = folders();
    ASSERT_EQ(both.size(), 2);
    both.removeOne(ofTheFirst);
    EXPECT_EQ(mastersOfCopies(both.first()), (QList<qint64>{5, 7, 8, 9}));
}

TEST_F(BackupsOfALibrary, aRunMakesOneHoweverOftenItWritesAndNoneWithoutWriting)
{
    EXPECT_TRUE(open(Access::Read)->close().ok());
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(folders(), QStringList());
    runWith(package(), 3);
    ASSERT_EQ(folders().size(), 1);
    EXPECT_EQ(mastersOfCopies(folders().first()), QList<qint64>{0});
}

TEST_F(BackupsOfALibrary, whatIsNoFinishedCopyNeitherCountsNorGoes)
{
    const QStringList others{u"00000000-000000-000.unfinished"_s, u".hidden"_s, u"a file.txt"_s};
    ASSERT_TRUE(QDir().mkpath(ownFolder() + u'/' + others[0] + u"/Database"_s));
    ASSERT_TRUE(QDir().mkpath(ownFolder() + u'/' + others[1]));
    QFile file(ownFolder() + u'/' + others[2]);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QStringList made = make(6);
    QStringList left = namesIn(ownFolder());
    for (const QString& other : others) {
        EXPECT_TRUE(left.removeOne(other)) << other.toStdString();
    }
    EXPECT_EQ(left, QStringList{made.first()} + made.last(3));
    EXPECT_TRUE(QFileInfo::exists(ownFolder() + u'/' + others[0] + u"/Database"_s));
}

TEST_F(BackupsOfALibrary, aCopyHoldsDatabasesAndCataloguesAsTheyAreAndNoPictures)
{
    runWith(package(), 1);
    const QString copy = ownFolder() + u'/' + make(1).first();
    EXPECT_EQ(namesIn(copy),
              (QStringList{u"AlbumData.xml"_s, u"Database"_s, u"Info.plist"_s, u"iLifeShared"_s}));
    QStringList same{u"AlbumData.xml"_s,
                     u"Info.plist"_s,
                     u"iLifeShared/AlbumData2.xml"_s,
                     u"Database/Keywords.plist"_s,
                     u"Database/apdb/Faces.db"_s,
                     u"Database/apdb/History.apdb"_s};
    same << versionSidecars();
    for (const QString& file : std::as_const(same)) {
        EXPECT_TRUE(contentOf(copy + u'/' + file) == contentOf(package() + u'/' + file))
            << file.toStdString();
    }
    for (const char* name : {"Library", "Properties", "ImageProxies"}) {
        // Only the head differs, in which SQLite counts changes.
        constexpr qsizetype kHead = 100;
        const QString file = u"/Database/apdb/%1.apdb"_s.arg(QLatin1StringView(name));
        EXPECT_TRUE(contentOf(copy + file).mid(kHead) == contentOf(package() + file).mid(kHead))
            << name;
    }
    EXPECT_EQ(mastersIn(copy), 1);
}

TEST_F(BackupsOfALibrary, aCopyMadeWithinATransactionIsTheStateBeforeItWithoutAJournal)
{
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        connection.value()->beginImmediate();
        Sql::execute(*connection.value(), "DELETE FROM RKKeyword");
        EXPECT_EQ(make(1).size(), 1);
        connection.value()->rollback();
    }
    const QString copy = ownFolder() + u'/' + namesIn(ownFolder()).first();
    EXPECT_EQ(QDir(copy + u"/Database/apdb"_s).entryList({u"*-*"_s}, QDir::Files), QStringList());
    auto connection = Connection::open(copy, Connection::Mode::Read);
    ASSERT_TRUE(connection.ok());
    EXPECT_EQ(Sql::firstInteger(*connection.value(), "SELECT count(*) FROM RKKeyword"), 6);
}

TEST_F(BackupsOfALibrary, withoutACopyNothingIsWrittenAndTheOlderCopiesStay)
{
    runWith(package(), 1);
    ASSERT_EQ(folders().size(), 1);
    const QString backups = folders().first();
    const QStringList before = namesIn(backups);
    const QStringList files = pictureFiles();
    const OrdinaryUser user({folder()});
    const QString sidecar = package() + u'/' + versionSidecars().first();
    {
        const WithPermissions closed(sidecar, 0);
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        try {
            import(*library, makePicture(u"IMG_2.JPG"_s));
            ADD_FAILURE() << "it was written to";
        } catch (const ScriptingException& exception) {
            EXPECT_TRUE(exception.reason().startsWith(
                u"No backup of the databases of the library \"%1\" could be made, so nothing was "
                "written to it: \"%2\" cannot be read"_s.arg(package(), sidecar)))
                << exception.what();
        }
        EXPECT_TRUE(library->close().ok());
    }
    EXPECT_EQ(namesIn(backups), before);
    EXPECT_EQ(pictureFiles(), files);
    EXPECT_EQ(rows(u"RKMaster"_s), 1);
    expectSound();
}

TEST_F(BackupsOfALibrary, whatHasNoEndIsNotCopied)
{
    const QString catalogue = package() + u"/AlbumData.xml"_s;
    const auto expectRefused = [&] {
        const Result<QString> made = Backup::make(package(), ownFolder());
        ASSERT_FALSE(made.ok());
        EXPECT_EQ(made.error().code, ErrorCode::Unreadable);
        EXPECT_TRUE(made.error().message.contains(
            u"\"%1\" is no plain file: put a plain file in its place, or remove it."_s.arg(
                catalogue)))
            << made.error().message.toStdString();
        EXPECT_EQ(namesIn(ownFolder()), QStringList());
    };
    QFile::remove(catalogue);
    ASSERT_EQ(::mkfifo(QFile::encodeName(catalogue).constData(), 0600), 0);
    expectRefused();
    ASSERT_TRUE(QFile::remove(catalogue));
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, catalogue));
    expectRefused();
}

TEST_F(BackupsOfALibrary, whereNoCopyCanBePutTheRemedyIsSaid)
{
    ASSERT_TRUE(QDir().mkpath(ownFolder()));
    const OrdinaryUser user({folder()});
    const WithPermissions closed(ownFolder(), 0555);
    const Result<QString> made = Backup::make(package(), ownFolder());
    ASSERT_FALSE(made.ok());
    EXPECT_EQ(made.error().code, ErrorCode::NotWritable);
    const QString& message = made.error().message;
    EXPECT_TRUE(message.contains(u"Permission denied"_s)) << message.toStdString();
    EXPECT_TRUE(message.endsWith(u" Make room or change the permissions in \"%1\", or set "
                                 "XDG_STATE_HOME to another folder."_s.arg(ownFolder())))
        << message.toStdString();
}
