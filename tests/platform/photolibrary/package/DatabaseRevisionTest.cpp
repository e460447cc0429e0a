#include "DatabaseRevision.h"

#include "LibraryCreator.h"
#include "Queries.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

class DatabaseRevisionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(LibraryCreator::create(package()).ok());
        auto reading = Connection::open(package(), Connection::Mode::Read);
        auto writing = Connection::open(package(), Connection::Mode::Write);
        ASSERT_TRUE(reading.ok() && writing.ok());
        m_reading = std::move(reading).value();
        m_writing = std::move(writing).value();
    }

    [[nodiscard]] QString package() const { return m_folder.filePath(u"Test.photolibrary"_s); }

    QTemporaryDir m_folder;
    std::unique_ptr<Connection> m_reading;
    std::unique_ptr<Connection> m_writing;
};

TEST_F(DatabaseRevisionTest, aCommitOfAnotherConnectionToAnyDatabaseChangesIt)
{
    for (const char* sql : {"INSERT INTO main.RKNote(modelId) VALUES(1)",
                            "INSERT INTO prop.RKUniqueString(modelId) VALUES(1)",
                            "INSERT INTO prox.RKImageProxyState(modelId) VALUES(1)"}) {
        const QList<qint64> before = DatabaseRevision::of(*m_reading);
        m_writing->beginImmediate();
        Sql::execute(*m_writing, sql);
        EXPECT_EQ(DatabaseRevision::of(*m_reading), before) << sql;
        m_writing->commit();
        EXPECT_NE(DatabaseRevision::of(*m_reading), before) << sql;
    }
}

TEST_F(DatabaseRevisionTest, whatIsUndoneOrWrittenByTheConnectionItselfDoesNotChangeIt)
{
    const QList<qint64> before = DatabaseRevision::of(*m_writing);
    const QList<qint64> beforeOfReader = DatabaseRevision::of(*m_reading);
    m_writing->beginImmediate();
    Sql::execute(*m_writing, "INSERT INTO RKNote(modelId) VALUES(1)");
    m_writing->rollback();
    EXPECT_EQ(DatabaseRevision::of(*m_reading), beforeOfReader);
    m_writing->beginImmediate();
    Sql::execute(*m_writing, "INSERT INTO RKNote(modelId) VALUES(1)");
    m_writing->commit();
    EXPECT_EQ(DatabaseRevision::of(*m_writing), before);
}

TEST_F(DatabaseRevisionTest, aReplacedDatabaseHasNone)
{
    const QString file = package() + "/Database/apdb/Properties.apdb"_L1;
    ASSERT_TRUE(QFile::rename(file, file + ".old"_L1));
    EXPECT_THROW(static_cast<void>(DatabaseRevision::of(*m_reading)), SQLite::Exception);
}
