#include "OpeningChecks.h"

#include "LibraryCreator.h"
#include "PackageCopy.h"
#include "QtPrinters.h"

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
    EXPECT_TRUE(OpeningChecks::soundDatabases(*connection).ok());
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
    EXPECT_TRUE(OpeningChecks::soundDatabases(library.connection()).ok());
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
    expectRefused(ErrorCode::Unsupported);
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
