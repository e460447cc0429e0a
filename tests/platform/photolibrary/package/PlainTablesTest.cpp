#include "PlainTables.h"

#include "LibraryCreator.h"
#include "PackageCopy.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

class PlainTablesTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(LibraryCreator::create(package()).ok()); }

    [[nodiscard]] QString package() const { return m_folder.filePath(u"Test.photolibrary"_s); }

    /// Changes a database behind the program's back.
    void change(const QString& name, const char* sql) const
    {
        const QString path = package() + u"/Database/apdb/"_s + name;
        SQLite::Database(path.toStdString(), SQLite::OPEN_READWRITE).exec(sql);
    }

    /// That it is opened neither for reading nor for writing, and what makes things up is named.
    void expectRefused(const QString& database, const QString& name) const
    {
        for (const Connection::Mode mode : {Connection::Mode::Read, Connection::Mode::Write}) {
            const auto opened = Connection::open(package(), mode);
            ASSERT_FALSE(opened.ok());
            EXPECT_EQ(opened.error().code, ErrorCode::Damaged);
            EXPECT_EQ(opened.error().message,
                      u"The database \"%1/Database/apdb/%2\" is not one that iPhoto wrote: its "
                      "\"%3\" holds no stored values but makes them up. Restore the library from "
                      "a backup."_s.arg(package(), database, name));
        }
    }

    QTemporaryDir m_folder;
};

} // namespace

TEST_F(PlainTablesTest, aViewWithoutEndInThePlaceOfATableIsNotAskedForAnything)
{
    change(u"Library.apdb"_s,
           "DROP TABLE RKVersion; CREATE VIEW RKVersion AS WITH RECURSIVE n(modelId) AS"
           " (SELECT 1 UNION ALL SELECT modelId + 1 FROM n) SELECT * FROM n");
    expectRefused(u"Library.apdb"_s, u"RKVersion"_s);
}

TEST_F(PlainTablesTest, viewsThatDoubleEachOtherAreNotLookedInto)
{
    std::string sql = "CREATE VIEW v0 AS SELECT 1 AS a;";
    for (int i = 1; i < 50; ++i) {
        const std::string last = "v" + std::to_string(i - 1);
        sql += "CREATE VIEW v" + std::to_string(i) + " AS SELECT a FROM " + last;
        sql += " UNION ALL SELECT a FROM " + last + ";";
    }
    change(u"Properties.apdb"_s, sql.c_str());
    expectRefused(u"Properties.apdb"_s, u"v0"_s);
}

TEST_F(PlainTablesTest, aTableOfAnotherDatabaseIsNoViewInThisOneEither)
{
    change(u"Library.apdb"_s, "CREATE VIEW RKUniqueString AS SELECT 1 AS modelId");
    expectRefused(u"Library.apdb"_s, u"RKUniqueString"_s);
}

TEST_F(PlainTablesTest, aComputedColumnIsRefusedWhetherStoredOrNot)
{
    change(u"ImageProxies.apdb"_s,
           "ALTER TABLE RKImageProxyState ADD COLUMN big AS (printf('%.*c', 900000000, 'x'))");
    expectRefused(u"ImageProxies.apdb"_s, u"RKImageProxyState.big"_s);
    change(u"ImageProxies.apdb"_s,
           "DROP TABLE RKImageProxyState; CREATE TABLE RKImageProxyState(modelId integer primary"
           " key, big AS (modelId + 1) STORED)");
    expectRefused(u"ImageProxies.apdb"_s, u"RKImageProxyState.big"_s);
}

TEST_F(PlainTablesTest, aKnownTableThatIsVirtualIsRefusedInAnySpelling)
{
    change(u"Properties.apdb"_s,
           "DROP TABLE RKIptcProperty; CREATE VIRTUAL TABLE rkiptcproperty USING rtree(modelId,"
           " low, high)");
    expectRefused(u"Properties.apdb"_s, u"rkiptcproperty"_s);
}

TEST_F(PlainTablesTest, virtualTablesThatAreNotAskedForStay)
{
    change(u"Library.apdb"_s, "CREATE VIRTUAL TABLE strange USING rtree(id, low, high)");
    EXPECT_TRUE(Connection::open(package(), Connection::Mode::Read).ok());
}

TEST_F(PlainTablesTest, aTextLongerThanAnyOfALibraryIsNotMade)
{
    const auto connection = Connection::open(package(), Connection::Mode::Read);
    ASSERT_TRUE(connection.ok());
    SQLite::Statement many(connection.value()->database(), "SELECT zeroblob(900000000)");
    EXPECT_THROW(many.executeStep(), SQLite::Exception);
}

TEST(RealPlainTables, aLibraryOfIPhotosOwnHasNothingElse)
{
    PackageCopy library;
    if (library.isPresent()) {
        EXPECT_TRUE(PlainTables::check(library.connection()).ok());
    }
}
