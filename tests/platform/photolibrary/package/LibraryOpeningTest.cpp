#include "LibraryOpening.h"

#include "AdminData.h"
#include "ForeignUse.h"
#include "OrdinaryUser.h"
#include "Queries.h"
#include "WritableLibrary.h"
#include "WriteAccess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <future>

using namespace Qt::StringLiterals;

namespace
{

class OpenedLibrary : public WritableLibrary
{
protected:
    /// A photo in the library, and the library closed.
    void importOne(const QString& name) const
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        import(*library, makePicture(name));
        ASSERT_TRUE(library->close().ok());
    }

    /// Changes the databases behind the program's back.
    void change(const char* sql) const
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(connection.ok());
        SQLite::Database& database = connection.value()->database();
        sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
        database.exec(sql);
    }

    void loseARowInAnIndex() const
    {
        // The index is not known while a row is added to its table.
        change("PRAGMA writable_schema=ON;"
               "CREATE TABLE kept AS SELECT * FROM sqlite_master WHERE type = 'index' AND"
               " tbl_name = 'RKKeyword' AND sql IS NOT NULL;"
               "DELETE FROM sqlite_master WHERE name IN (SELECT name FROM kept)");
        change("INSERT INTO RKKeyword(modelId, uuid, name, searchName) VALUES(900, 'u', 'n', 'n')");
        change("PRAGMA writable_schema=ON;"
               "INSERT INTO sqlite_master SELECT * FROM kept; DROP TABLE kept");
        change("UPDATE RKAdminData SET propertyValue = '1000' WHERE propertyArea = 'RKKeyword'"
               " AND propertyName = 'nextModelId'");
    }

    [[nodiscard]] QString stateFolder() const
    {
        const auto connection = Connection::open(package(), Connection::Mode::Read);
        const QString uuid = AdminData::text(*connection.value(), u"database"_s, u"databaseUuid"_s);
        return WriteAccess::Places::of(package(), uuid).state;
    }

    /// As if this program had made all the changes.
    void leaveAsOwn() const
    {
        ForeignUse::leave(stateFolder(), ForeignUse::tracesOf(package()).print);
    }

    /// What an opening for writing says that waits for another program's lock, while that program
    /// changes the databases.
    [[nodiscard]] QString toldAfterAWait() const
    {
        const QString lock = stateFolder() + u"/lock"_s;
        const auto other = Connection::open(package(), Connection::Mode::Write);
        other.value()->beginImmediate();
        std::future<QString> told = std::async(std::launch::async, [this] {
            const auto library = PhotoLibrary::open(package(), {Access::Write});
            return library.ok() ? library.value()->warnings().join(u'\n') : library.error().message;
        });
        // It has looked at the databases by then.
        while (QFileInfo(lock).size() == 0 &&
               told.wait_for(std::chrono::milliseconds(1)) == std::future_status::timeout) {
        }
        other.value()->database().exec("UPDATE RKVersion SET name = name || '!'");
        other.value()->commit();
        return told.get();
    }

    void leaveOpen() const
    {
        change("UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'");
    }

    /// The message of an opening for writing that is refused with that code.
    [[nodiscard]] QString refusal(ErrorCode code, bool afterCrash = false) const
    {
        const auto library = PhotoLibrary::open(package(), {Access::Write, afterCrash});
        EXPECT_FALSE(library.ok());
        if (library.ok()) {
            return {};
        }
        EXPECT_EQ(library.error().code, code) << library.error().message.toStdString();
        EXPECT_TRUE(library.error().message.contains(package()));
        return library.error().message;
    }

    void expectSays(const QString& message, std::initializer_list<const char*> words) const
    {
        for (const char* word : words) {
            EXPECT_TRUE(message.contains(QLatin1StringView(word)))
                << word << " is not in: " << message.toStdString();
        }
    }

    [[nodiscard]] QStringList problems() const
    {
        const auto library = open(Access::Read);
        const Result<LibrarySummary> summary = library->summary();
        EXPECT_TRUE(summary.ok());
        return summary.ok() ? summary.value().problems : QStringList();
    }

    [[nodiscard]] QByteArray content(const QString& name) const
    {
        QFile file(package() + u'/' + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(package() + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
};

} // namespace

TEST_F(OpenedLibrary, databasesThatContradictThemselvesAreNotWrittenToHoweverTheyWereClosed)
{
    importOne(u"IMG_1.JPG"_s);
    for (const char* sql :
         {"UPDATE RKAdminData SET propertyValue='1' WHERE propertyArea='RKMaster'"
          " AND propertyName='nextModelId'",
          "DELETE FROM RKVersion_RidIndexes WHERE indexName='isInTrash'",
          "UPDATE RKFolder SET versionCount=7 WHERE folderType=2 AND isMagic=0"}) {
        change(sql);
        expectSays(refusal(ErrorCode::Damaged), {"corvane-cli verify", "restore it from a backup"});
        EXPECT_FALSE(problems().isEmpty());
    }
    expectSays(refusal(ErrorCode::Damaged), {"3 problems"});
    leaveOpen();
    expectSays(refusal(ErrorCode::Damaged, true), {"3 problems", "corvane-cli verify"});
    EXPECT_NE(open(Access::Read), nullptr) << "it is read all the same";
}

TEST_F(OpenedLibrary, anIndexThatLacksARowIsDamageHoweverTheLibraryWasClosed)
{
    importOne(u"IMG_1.JPG"_s);
    loseARowInAnIndex();
    expectSays(refusal(ErrorCode::Damaged), {"A database is damaged", "corvane-cli verify"});
    const auto library = open(Access::Read);
    ASSERT_NE(library, nullptr);
    const auto summary = library->summary();
    ASSERT_TRUE(summary.ok());
    EXPECT_FALSE(summary.value().problems.isEmpty());
    EXPECT_FALSE(summary.value().writable);
}

TEST_F(OpenedLibrary, nothingIsToldOfTheRowsOfADatabaseThatIsDamaged)
{
    importOne(u"IMG_1.JPG"_s);
    change("UPDATE RKFolder SET versionCount=7 WHERE folderType=2 AND isMagic=0");
    EXPECT_EQ(problems().size(), 1);
    loseARowInAnIndex();
    ASSERT_EQ(problems().size(), 1);
    EXPECT_TRUE(problems().first().contains("A database is damaged"_L1));
    expectSays(refusal(ErrorCode::Damaged), {"1 problem,"});
}

TEST_F(OpenedLibrary, databasesAsThisProgramLeftThemAreNotReadWholeAgainForTheirIndexes)
{
    importOne(u"IMG_1.JPG"_s);
    loseARowInAnIndex();
    leaveAsOwn();
    EXPECT_NE(open(Access::Write), nullptr);
    EXPECT_NE(open(Access::Write), nullptr) << "that run left them as well";
    change("UPDATE RKAdminData SET propertyValue = '1001' WHERE propertyArea = 'RKKeyword'"
           " AND propertyName = 'nextModelId'");
    expectSays(refusal(ErrorCode::Damaged), {"A database is damaged"});
}

TEST_F(OpenedLibrary, databasesAsThisProgramLeftThemAreReadWholeWhereTheyWereNotClosed)
{
    importOne(u"IMG_1.JPG"_s);
    loseARowInAnIndex();
    leaveOpen();
    leaveAsOwn();
    expectSays(refusal(ErrorCode::Damaged, true), {"A database is damaged"});
}

TEST_F(OpenedLibrary, whatAnotherProgramWritesWhileItsLockIsWaitedForIsChecked)
{
    importOne(u"IMG_1.JPG"_s);
    loseARowInAnIndex();
    leaveAsOwn();
    expectSays(toldAfterAWait(), {"A database is damaged"});
    expectSays(refusal(ErrorCode::Damaged), {"A database is damaged"});
}

TEST_F(OpenedLibrary, whatAnotherProgramWritesWhileItsLockIsWaitedForIsTold)
{
    importOne(u"IMG_1.JPG"_s);
    expectSays(toldAfterAWait(), {"changed within the last minute"});
}

TEST_F(OpenedLibrary, textsOfPhotosThatAreNotThereAreAProblem)
{
    importOne(u"IMG_1.JPG"_s);
    for (const char* table : {"RKOtherProperty", "RKExifStringProperty"}) {
        const std::string sql = std::string("INSERT INTO prop.") + table +
                                "(modelId, versionId, propertyKey) VALUES(4711, 4711, 'x')";
        change(sql.c_str());
    }
    EXPECT_EQ(problems().filter(u"text(s) belong to no photo"_s).size(), 2)
        << problems().join(u'\n').toStdString();
}

TEST_F(OpenedLibrary, strayAndMissingFilesDoNotKeepAClosedLibraryFromBeingWrittenTo)
{
    importOne(u"IMG_1.JPG"_s);
    for (const QString& file : pictureFiles()) {
        ASSERT_TRUE(QFile::remove(package() + u'/' + file));
    }
    put(u"Masters/stray.jpg"_s, "somebody's");
    EXPECT_EQ(problems().size(), 2);
    EXPECT_NE(open(Access::Write), nullptr);
}

TEST_F(OpenedLibrary, aLibraryThatWasNotClosedIsRefusedWithTheConditionOfAcceptingIt)
{
    importOne(u"IMG_1.JPG"_s);
    leaveOpen();
    expectSays(refusal(ErrorCode::NotClosed),
               {"iPhoto did not close",
                "--after-crash",
                "integrity check passes",
                "files left unfinished",
                "sets of ids"});
    put(u"Masters/stray.jpg"_s, "somebody's");
    expectSays(refusal(ErrorCode::Damaged, true),
               {"is 1 problem",
                "corvane-cli verify",
                "stray.jpg",
                "verify --repair --after-crash",
                "move files"});
    ASSERT_TRUE(QFile::remove(package() + u"/Masters/stray.jpg"_s));
    const auto library = PhotoLibrary::open(package(), {Access::Write, true});
    EXPECT_TRUE(library.ok()) << library.error().message.toStdString();
}

TEST_F(OpenedLibrary, ofALibraryThatWasNotClosedItIsSaidWhatOnlyIPhotoCanMend)
{
    importOne(u"IMG_1.JPG"_s);
    change("DELETE FROM RKImportGroup");
    leaveOpen();
    const QString refused = refusal(ErrorCode::Damaged, true);
    expectSays(refused, {"Only iPhoto can mend", "open it in iPhoto", "from a backup"});
    EXPECT_FALSE(refused.contains("--repair"_L1)) << refused.toStdString();
}

TEST_F(OpenedLibrary, whatCannotFollowIsSafeInTheDatabasesAndFollowsAtTheNextRun)
{
    importOne(u"IMG_1.JPG"_s);
    const QStringList sidecars = versionSidecars();
    const QString folder = package() + u'/' + sidecars.first().section(u'/', 0, -2);
    const QByteArray before = content(sidecars.first());
    const OrdinaryUser user({this->folder()});
    {
        const auto library = open(Access::Write);
        ASSERT_NE(library, nullptr);
        const WithPermissions closed(folder, 0555);
        const PhotoPtr photo = application(*library)->photoLibraryAlbum()->photos().first();
        photo->removeFrom(application(*library)->photoLibraryAlbum());
        const Result<void> followed = library->close();
        ASSERT_FALSE(followed.ok());
        EXPECT_EQ(followed.error().code, ErrorCode::NotWritable);
        expectSays(followed.error().message,
                   {"Permission denied", "safe in the databases", "next run"});
    }
    EXPECT_EQ(content(sidecars.first()), before);
    EXPECT_FALSE(content(u"AlbumData.xml"_s).contains("IMG_1.JPG")) << "it waits for a sidecar";
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_NE(content(sidecars.first()), before);
    expectSound();
}

TEST_F(OpenedLibrary, ofALibraryThatWasNotClosedNothingIsAcceptedThatFollowsNothing)
{
    importOne(u"IMG_1.JPG"_s);
    const QByteArray catalogue = content(u"AlbumData.xml"_s);
    leaveOpen();
    const QString sidecar = u"Database/Albums/stray.apalbum"_s;
    put(sidecar, "somebody's");
    expectSays(refusal(ErrorCode::Damaged, true),
               {"sidecar(s) belong to no album", "stray.apalbum"});
    ASSERT_TRUE(QFile::remove(package() + u'/' + sidecar));
    for (const QString& root : {u"Previews"_s, u"Thumbnails"_s, u"Database/Versions"_s}) {
        const QString folder = root + u"/2010/strange"_s;
        ASSERT_TRUE(QDir().mkpath(package() + u'/' + folder));
        put(folder + u"/picture.jpg"_s, "somebody's");
        expectSays(refusal(ErrorCode::Damaged, true), {"belong to no photo", "2010/strange"});
        ASSERT_TRUE(QDir(package() + u'/' + folder).removeRecursively());
    }
    put(u"AlbumData.xml"_s, "torn");
    expectSays(refusal(ErrorCode::Damaged, true), {"AlbumData.xml"});
    put(u"AlbumData.xml"_s, catalogue);
    EXPECT_TRUE(PhotoLibrary::open(package(), {Access::Write, true}).ok());
}

TEST_F(OpenedLibrary, ofALibraryThatWasNotClosedAMissingOriginalDoesNotMatter)
{
    importOne(u"IMG_1.JPG"_s);
    leaveOpen();
    ASSERT_TRUE(QFile::remove(package() + u'/' + pictureFiles().filter(u"Masters/"_s).first()));
    EXPECT_TRUE(PhotoLibrary::open(package(), {Access::Write, true}).ok());
}

TEST_F(OpenedLibrary, ofALibraryThatWasNotClosedWhatWritingMakesNoWorseDoesNotMatter)
{
    importOne(u"IMG_1.JPG"_s);
    change("UPDATE RKMaster SET fileSize=fileSize+1");
    change("UPDATE RKFolder SET maxImageDate=maxImageDate+5000 WHERE folderType=2 AND isMagic=0");
    put(u"iLifeShared/AlbumData2.xml"_s, "torn");
    put(u"Database/.Keywords.plist.0abc123.corvane-new"_s, "half");
    ASSERT_TRUE(QFile::remove(package() + u"/Database/Library.apdb"_s));
    leaveOpen();
    QStringList told;
    const Result<QList<Finding>> found = open(Access::Read)->verify();
    for (const Finding& finding : found.value()) {
        told.append(finding.what);
    }
    for (const QString& words : {u"bytes, but"_s,
                                 u"first or last date"_s,
                                 u"AlbumData2.xml is damaged"_s,
                                 u"left unfinished"_s,
                                 u"link to"_s}) {
        EXPECT_EQ(told.filter(words).size(), 1) << words.toStdString();
    }
    const auto library = PhotoLibrary::open(package(), {Access::Write, true});
    EXPECT_TRUE(library.ok()) << library.error().message.toStdString();
}

TEST_F(OpenedLibrary, aDamagedCatalogueIsAProblemThatStopsNothingAndStaysAsItIs)
{
    importOne(u"IMG_1.JPG"_s);
    const QByteArray good = content(u"AlbumData.xml"_s);
    const QByteArray torn = good.left(good.size() / 2);
    put(u"AlbumData.xml"_s, torn);
    ASSERT_EQ(problems().size(), 1);
    expectSays(problems().first(), {"AlbumData.xml", "restore it from a backup"});

    testing::internal::CaptureStderr();
    importOne(u"IMG_2.JPG"_s);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("AlbumData.xml\" is damaged, so it is left as it is"), std::string::npos)
        << log;
    EXPECT_EQ(content(u"AlbumData.xml"_s), torn);
    EXPECT_EQ(rows(u"RKMaster"_s), 2);

    put(u"AlbumData.xml"_s, good);
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_TRUE(content(u"AlbumData.xml"_s).contains("IMG_2.JPG")) << "it follows once it can";
    EXPECT_EQ(problems(), QStringList());
}

TEST_F(OpenedLibrary, whatALinkLeadsOutIsSaidOnceAndNothingIsLeftToFollow)
{
    importOne(u"IMG_1.JPG"_s);
    const QString catalogue = package() + u"/AlbumData.xml"_s;
    ASSERT_TRUE(QFile::rename(catalogue, folder() + u"/elsewhere.xml"_s));
    ASSERT_TRUE(QFile::link(folder() + u"/elsewhere.xml"_s, catalogue));
    {
        const auto library = open(Access::Write);
        import(*library, makePicture(u"IMG_2.JPG"_s));
        const Result<void> followed = library->synchronise();
        ASSERT_FALSE(followed.ok());
        EXPECT_EQ(followed.error().code, ErrorCode::LeadsOut);
        expectSays(followed.error().message, {"AlbumData.xml", "in the place of the link"});
        EXPECT_FALSE(followed.error().message.contains("next run"_L1));
        EXPECT_TRUE(library->synchronise().ok()) << "it was said";
        EXPECT_TRUE(library->close().ok());
    }
    EXPECT_TRUE(content(u"iLifeShared/AlbumData2.xml"_s).contains("<string>1,3</string>"))
        << "the other one follows";
    testing::internal::CaptureStderr();
    EXPECT_TRUE(open(Access::Write)->close().ok());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    importOne(u"IMG_3.JPG"_s);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("in the place of the link"), std::string::npos) << log;
}

TEST_F(OpenedLibrary, synchroniseSaysThatTheCatalogueIsDamaged)
{
    put(u"AlbumData.xml"_s, "torn");
    const auto library = open(Access::Write);
    ASSERT_NE(library, nullptr);
    import(*library, makePicture(u"IMG_1.JPG"_s));
    const Result<void> followed = library->synchronise();
    ASSERT_FALSE(followed.ok());
    EXPECT_EQ(followed.error().code, ErrorCode::Damaged);
    expectSays(followed.error().message, {"AlbumData.xml", "safe in the databases"});
}
