#include "OpeningChecks.h"

#include "LibraryCreator.h"
#include "OrdinaryUser.h"
#include "PackageCopy.h"
#include "QtPrinters.h"

#include <QDate>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <array>
#include <memory>

using namespace Qt::StringLiterals;

namespace
{

class OpeningChecksTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const Result<void> made = LibraryCreator::create(package());
        ASSERT_TRUE(made.ok()) << made.error().message.toStdString();
    }

    [[nodiscard]] QString package() const { return m_folder.path() + u"/New.photolibrary"_s; }

    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(package() + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    [[nodiscard]] std::unique_ptr<Connection> opened() const
    {
        auto connection = Connection::open(package(), Connection::Mode::Write);
        EXPECT_TRUE(connection.ok());
        return std::move(connection).value();
    }

    void expectRefused(ErrorCode code) const
    {
        const Result<QString> version = OpeningChecks::recognise(package());
        ASSERT_FALSE(version.ok());
        EXPECT_EQ(version.error().code, code);
        EXPECT_TRUE(version.error().message.contains(package()));
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(OpeningChecksTest, aNewLibraryPassesThemAll)
{
    const Result<QString> version = OpeningChecks::recognise(package());
    ASSERT_TRUE(version.ok());
    EXPECT_EQ(version.value(), u"9.6.1"_s);
    EXPECT_TRUE(OpeningChecks::permissions(package()).ok());
    const std::unique_ptr<Connection> connection = opened();
    EXPECT_TRUE(OpeningChecks::readable(*connection).ok());
    const Result<void> schema = OpeningChecks::writableSchema(*connection);
    EXPECT_TRUE(schema.ok()) << (schema.ok() ? "" : schema.error().message.toStdString());
    EXPECT_TRUE(OpeningChecks::closedClean(*connection));
}

TEST(RealOpeningChecks, aLibraryOfIPhotosOwnPassesThemAll)
{
    PackageCopy library;
    if (!library.isPresent()) {
        return;
    }
    const Result<QString> version = OpeningChecks::recognise(library.package());
    ASSERT_TRUE(version.ok());
    EXPECT_EQ(version.value(), u"9.6.1"_s);
    EXPECT_TRUE(OpeningChecks::readable(library.connection()).ok());
    EXPECT_TRUE(OpeningChecks::writableSchema(library.connection()).ok());
    EXPECT_TRUE(OpeningChecks::closedClean(library.connection()));
}

TEST(UnknownPackage, whatIsNotThereIsNotFound)
{
    const QTemporaryDir folder;
    const Result<QString> version = OpeningChecks::recognise(folder.path() + u"/none"_s);
    ASSERT_FALSE(version.ok());
    EXPECT_EQ(version.error().code, ErrorCode::NotFound);
}

TEST_F(OpeningChecksTest, aFolderWithoutDatabasesIsNoLibrary)
{
    ASSERT_TRUE(QFile::remove(package() + u"/Database/apdb/Library.apdb"_s));
    expectRefused(ErrorCode::Unsupported);
}

TEST_F(OpeningChecksTest, anApertureLibraryIsNotSupported)
{
    ASSERT_TRUE(QDir(package()).mkdir(u"Aperture.aplib"_s));
    QFile::remove(package() + u"/AlbumData.xml"_s);
    expectRefused(ErrorCode::Unsupported);
}

TEST_F(OpeningChecksTest, aLibraryThatApertureHasOpenedAsWellIsOneOfIPhoto)
{
    ASSERT_TRUE(QDir(package()).mkdir(u"Aperture.aplib"_s));
    put(u"AlbumData.xml"_s, "<plist/>");
    EXPECT_TRUE(OpeningChecks::recognise(package()).ok());
}

TEST_F(OpeningChecksTest, aDamagedInfoPlistIsSaidToBe)
{
    for (const QByteArray& bytes : {QByteArray(), QByteArray("<plist>"), QByteArray("rubbish")}) {
        put(u"Info.plist"_s, bytes);
        expectRefused(ErrorCode::Damaged);
    }
}

TEST_F(OpeningChecksTest, whatMakesALibraryUnreadableIsRefused)
{
    struct Case {
        const char* sql;
        ErrorCode code;
    };

    const std::array cases{
        Case{"DROP TABLE RKFolder", ErrorCode::Unsupported},
        Case{"UPDATE RKAdminData SET propertyValue='com.apple.Aperture' WHERE"
             " propertyName='applicationIdentifier'",
             ErrorCode::Unsupported},
        Case{"UPDATE RKAdminData SET propertyValue='109' WHERE propertyName='versionMajor'",
             ErrorCode::Unsupported},
        Case{"INSERT INTO RKMaster(modelId,fileName) VALUES(1,'')", ErrorCode::Damaged},
        Case{"INSERT INTO RKMaster(modelId,fileName) VALUES(1,'..')", ErrorCode::Damaged},
        Case{"INSERT INTO RKMaster(modelId,fileName) VALUES(1,'a/b.jpg')", ErrorCode::Damaged},
        Case{"INSERT INTO RKMaster(modelId,fileName) VALUES(1,CAST(x'610062' AS TEXT))",
             ErrorCode::Damaged},
    };
    const std::unique_ptr<Connection> connection = opened();
    for (const Case& item : cases) {
        connection->beginImmediate();
        connection->database().exec(item.sql);
        const Result<void> readable = OpeningChecks::readable(*connection);
        EXPECT_FALSE(readable.ok()) << item.sql;
        if (!readable.ok()) {
            EXPECT_EQ(readable.error().code, item.code) << item.sql;
        }
        connection->resetStatements();
        connection->rollback();
    }
    EXPECT_TRUE(OpeningChecks::readable(*connection).ok());
}

TEST_F(OpeningChecksTest, anUnknownSchemaIsReadButNotWritten)
{
    const std::unique_ptr<Connection> connection = opened();
    for (const char* sql :
         {"ALTER TABLE RKVersion ADD COLUMN surprise integer",
          "CREATE TRIGGER t AFTER INSERT ON RKVersion BEGIN SELECT 1; END",
          "UPDATE RKAdminData SET propertyValue='219' WHERE propertyName='versionMinor'",
          "UPDATE RKAdminData SET propertyValue='227' WHERE propertyName='versionMinor'"}) {
        connection->beginImmediate();
        connection->database().exec(sql);
        EXPECT_TRUE(OpeningChecks::readable(*connection).ok()) << sql;
        const Result<void> writable = OpeningChecks::writableSchema(*connection);
        EXPECT_FALSE(writable.ok()) << sql;
        connection->resetStatements();
        connection->rollback();
    }
}

TEST_F(OpeningChecksTest, aLibraryThatWasNotClosedIsNoticed)
{
    const std::unique_ptr<Connection> connection = opened();
    connection->database().exec(
        "UPDATE RKAdminData SET propertyValue='0' WHERE propertyName='closedClean'");
    EXPECT_FALSE(OpeningChecks::closedClean(*connection));
    connection->database().exec("DELETE FROM RKAdminData WHERE propertyName='closedClean'");
    EXPECT_FALSE(OpeningChecks::closedClean(*connection));
}

TEST_F(OpeningChecksTest, whereverAWriterWritesItMustBeAllowedTo)
{
    const QString today = QDate::currentDate().toString(u"yyyy/MM/dd"_s);
    QStringList places{QString(),
                       u"/Masters"_s,
                       u"/Previews"_s,
                       u"/Thumbnails"_s,
                       u"/iLifeShared"_s,
                       u"/Database"_s,
                       u"/Database/Versions"_s,
                       u"/Database/Folders"_s,
                       u"/Database/Albums"_s,
                       u"/Database/apdb"_s,
                       u"/Database/apdb/Library.apdb"_s,
                       u"/Database/apdb/Properties.apdb"_s,
                       u"/Database/apdb/ImageProxies.apdb"_s,
                       u"/AlbumData.xml"_s,
                       u"/iLifeShared/AlbumData2.xml"_s};
    for (const QString& root :
         {u"/Masters"_s, u"/Previews"_s, u"/Thumbnails"_s, u"/Database/Versions"_s}) {
        ASSERT_TRUE(QDir().mkpath(package() + root + u'/' + today));
        places << root + u'/' + today << root + u'/' + today.left(7) << root + u'/' + today.left(4);
    }
    const OrdinaryUser user({m_folder.path()});
    EXPECT_TRUE(OpeningChecks::permissions(package()).ok());
    for (const QString& place : std::as_const(places)) {
        const WithPermissions readOnly(package() + place, 0555);
        const Result<void> permitted = OpeningChecks::permissions(package());
        ASSERT_FALSE(permitted.ok()) << place.toStdString();
        EXPECT_EQ(permitted.error().code, ErrorCode::NotWritable);
        const QString message = permitted.error().message;
        EXPECT_TRUE(message.contains(u"permissions of \""_s + package() + place + u'"'))
            << message.toStdString();
    }
    EXPECT_TRUE(OpeningChecks::permissions(package()).ok());
}

TEST_F(OpeningChecksTest, whatIsMissingIsMadeAndNeedsNoPermission)
{
    for (const QString& folder : {u"Previews"_s, u"Thumbnails"_s, u"iLifeShared"_s}) {
        ASSERT_TRUE(QDir(package()).rename(folder, u"../was"_s + folder));
    }
    ASSERT_TRUE(QFile::remove(package() + u"/AlbumData.xml"_s));
    const OrdinaryUser user({m_folder.path()});
    EXPECT_TRUE(OpeningChecks::permissions(package()).ok());
}
