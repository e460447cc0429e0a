#include "Schema.h"

#include "LibraryFixture.h"

using namespace Qt::StringLiterals;

class SchemaTest : public LibraryFixture
{
protected:
    void change(const char* sql) { connection().database().exec(sql); }

    QString mismatches() { return Schema::mismatches(connection()).join('\n'_L1); }
};

TEST(RealSchemaTest, aLibraryOfTheApplicationItselfHasTheKnownForm)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    EXPECT_EQ(Schema::mismatches(library.connection()).join('\n'_L1).toStdString(), "");
}

TEST(RealSchemaTest, tablesAndIndexesAreThoseOfTheApplication)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    Connection& connection = library.connection();
    const QList<std::pair<Schema::Database, const char*>> databases{
        {Schema::Database::Library, "main"},
        {Schema::Database::Properties, "prop"},
        {Schema::Database::ImageProxies, "prox"}};
    for (const auto& [database, schema] : databases) {
        QStringList known = Schema::statements(database);
        known.removeIf([](const QString& sql) { return sql.contains("VIRTUAL"_L1); });
        const std::string sql = std::string("SELECT replace(sql,' on ',' ON ') FROM ") + schema +
                                ".sqlite_master WHERE sql NOT LIKE '%RTree%' ORDER BY 1";
        QStringList real = Sql::texts(connection, sql.c_str());
        known.sort();
        real.sort();
        EXPECT_EQ(known, real) << schema;
    }
}

TEST_F(SchemaTest, aColumnTooManyIsTold)
{
    change("ALTER TABLE RKVersion ADD COLUMN later integer");
    EXPECT_TRUE(mismatches().contains("RKVersion has the unknown column later"_L1));
}

TEST_F(SchemaTest, aColumnTooFewIsTold)
{
    change("ALTER TABLE prop.RKOtherProperty RENAME COLUMN modDate TO other");
    EXPECT_TRUE(mismatches().contains("RKOtherProperty lacks the column modDate"_L1));
}

TEST_F(SchemaTest, aMissingTableIsTold)
{
    change("DROP TABLE prox.RKImageProxyState_RidIndexes");
    EXPECT_EQ(mismatches(), u"its database has no table RKImageProxyState_RidIndexes"_s);
}

TEST_F(SchemaTest, aTriggerIsTold)
{
    change("CREATE TRIGGER prop.spring AFTER INSERT ON RKUniqueString BEGIN SELECT 1; END");
    EXPECT_TRUE(mismatches().startsWith("spring"_L1));
}
