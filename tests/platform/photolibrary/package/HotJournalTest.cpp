#include "ChildProcess.h"
#include "Connection.h"
#include "OrdinaryUser.h"
#include "QtPrinters.h"
#include "WritableLibrary.h"

#include <QMap>

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <filesystem>

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

/// Journals that no transaction needs any more.
class DeadJournal : public WritableLibrary
{
protected:
    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(apdb() + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
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
