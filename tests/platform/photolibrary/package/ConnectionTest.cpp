#include "Connection.h"

#include "LibraryCreator.h"
#include "LibraryErrors.h"
#include "Queries.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

class ConnectionTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(LibraryCreator::create(package()).ok()); }

    [[nodiscard]] QString package() const { return m_folder.path() + "/Test.photolibrary"_L1; }

    [[nodiscard]] QString database(const QString& name) const
    {
        return package() + "/Database/apdb/"_L1 + name;
    }

    [[nodiscard]] std::unique_ptr<Connection> open(Connection::Mode mode) const
    {
        auto opened = Connection::open(package(), mode, 10);
        EXPECT_TRUE(opened.ok());
        return std::move(opened).value();
    }

    [[nodiscard]] ErrorCode refusal(Connection::Mode mode) const
    {
        const auto opened = Connection::open(package(), mode, 10);
        EXPECT_FALSE(opened.ok());
        return opened.ok() ? ErrorCode::Internal : opened.error().code;
    }

    QTemporaryDir m_folder;
};

TEST_F(ConnectionTest, aTransactionSpansTheThreeDatabases)
{
    const auto writing = open(Connection::Mode::Write);
    const auto reading = open(Connection::Mode::Read);
    writing->beginImmediate();
    for (const char* sql : {"INSERT INTO main.RKNote(modelId) VALUES(1)",
                            "INSERT INTO prop.RKUniqueString(modelId) VALUES(1)",
                            "INSERT INTO prox.RKImageProxyState(modelId) VALUES(1)"}) {
        Sql::execute(*writing, sql);
    }
    EXPECT_TRUE(writing->inTransaction());
    writing->rollback();
    EXPECT_FALSE(writing->inTransaction());
    const char* const rows = "SELECT (SELECT count(*) FROM RKNote)+(SELECT count(*) FROM "
                             "RKUniqueString)+(SELECT count(*) FROM RKImageProxyState)";
    EXPECT_EQ(Sql::firstInteger(*reading, rows), 0);
    writing->beginImmediate();
    Sql::execute(*writing, "INSERT INTO main.RKNote(modelId) VALUES(1)");
    Sql::execute(*writing, "INSERT INTO prox.RKImageProxyState(modelId) VALUES(1)");
    writing->commit();
    EXPECT_EQ(Sql::firstInteger(*reading, rows), 2);
}

TEST_F(ConnectionTest, anUnfinishedTransactionIsUndoneWithItsConnection)
{
    auto writing = open(Connection::Mode::Write);
    writing->beginImmediate();
    Sql::execute(*writing, "DELETE FROM RKKeyword");
    writing.reset();
    EXPECT_EQ(Sql::firstInteger(*open(Connection::Mode::Read), "SELECT count(*) FROM RKKeyword"),
              6);
}

TEST_F(ConnectionTest, aReaderChangesNothing)
{
    const auto reading = open(Connection::Mode::Read);
    EXPECT_THROW(Sql::execute(*reading, "DELETE FROM RKKeyword"), SQLite::Exception);
}

TEST_F(ConnectionTest, aMissingDatabaseIsNamedAndNotMade)
{
    ASSERT_TRUE(QFile::remove(database(u"Properties.apdb"_s)));
    for (const auto mode : {Connection::Mode::Read, Connection::Mode::Write}) {
        const auto opened = Connection::open(package(), mode);
        ASSERT_FALSE(opened.ok());
        EXPECT_EQ(opened.error().code, ErrorCode::NotFound);
        EXPECT_TRUE(opened.error().message.contains("Properties.apdb"_L1));
    }
    EXPECT_FALSE(QFile::exists(database(u"Properties.apdb"_s)));
}

TEST_F(ConnectionTest, aFileThatIsNoDatabaseIsDamage)
{
    QFile file(database(u"ImageProxies.apdb"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(20000, 'x'));
    file.close();
    EXPECT_EQ(refusal(Connection::Mode::Read), ErrorCode::Damaged);
    EXPECT_EQ(refusal(Connection::Mode::Write), ErrorCode::Damaged);
}

TEST_F(ConnectionTest, aLibraryThatAnotherWritesIsInUse)
{
    const auto other = open(Connection::Mode::Write);
    other->beginImmediate();
    const auto mine = open(Connection::Mode::Write);
    try {
        mine->beginImmediate();
        FAIL() << "two writers";
    } catch (const SQLite::Exception& exception) {
        EXPECT_EQ(LibraryErrors::fromSqlite(exception, package()).code, ErrorCode::InUse);
    }
    other->rollback();
    mine->beginImmediate();
    EXPECT_TRUE(mine->inTransaction());
}

TEST_F(ConnectionTest, anUnfinishedReadDoesNotKeepOthersFromWriting)
{
    const auto reading = open(Connection::Mode::Read);
    SQLite::Statement& rows = reading->statement("SELECT name FROM RKKeyword");
    ASSERT_TRUE(rows.executeStep());
    const auto writing = open(Connection::Mode::Write);
    writing->beginImmediate();
    Sql::execute(*writing, "DELETE FROM RKKeyword");
    EXPECT_THROW(writing->commit(), SQLite::Exception);
    reading->resetStatements();
    writing->commit();
    EXPECT_EQ(Sql::firstInteger(*reading, "SELECT count(*) FROM RKKeyword"), 0);
}

TEST_F(ConnectionTest, valuesComeBackAsTheyWereBound)
{
    const auto writing = open(Connection::Mode::Write);
    writing->beginImmediate();
    const QString words = u"Ähre \U0001F33E a\u0000b"_s;
    for (const QVariant& value : {QVariant(),
                                  QVariant(qlonglong(-5000000000)),
                                  QVariant(0.25),
                                  QVariant(words),
                                  QVariant(u""_s),
                                  QVariant(QByteArray("\0\1", 2)),
                                  QVariant(QByteArray(""))}) {
        Sql::Query query(*writing, "SELECT ?", value);
        ASSERT_TRUE(query.next());
        const QVariant back = Sql::value(query.column(0));
        EXPECT_EQ(back, value);
        EXPECT_EQ(back.isValid(), value.isValid());
    }
    Sql::Query null(*writing, "SELECT ?,?,?", QString(), QByteArray(), u""_s);
    ASSERT_TRUE(null.next());
    EXPECT_TRUE(null.column(0).isNull());
    EXPECT_TRUE(null.column(1).isNull());
    EXPECT_FALSE(null.column(2).isNull());
}

TEST_F(ConnectionTest, aWriterFlushesEvenTheEndOfItsJournal)
{
    const auto writing = open(Connection::Mode::Write);
    for (const std::string schema : {"main", "prop", "prox"}) {
        const int extra = 3;
        EXPECT_EQ(writing->database().execAndGet("PRAGMA " + schema + ".synchronous").getInt(),
                  extra);
    }
}
