#include "ModelIds.h"

#include "AdminData.h"
#include "LibraryFixture.h"
#include "RowIdSet.h"

#include <limits>

using namespace Qt::StringLiterals;

class ModelIdsTest : public LibraryFixture
{
protected:
    qint64 insertKeyword()
    {
        Writer to = writer();
        const qint64 id = ModelIds::allocate(to, "RKKeyword");
        Sql::execute(connection(), "INSERT INTO RKKeyword(modelId,name) VALUES(?,'x')", id);
        return id;
    }

    RowIdSet allIds()
    {
        return RowIdSet::fromBlob(AdminData::blob(connection(), u"RKKeyword"_s, u"allModelIds"_s))
            .value_or(RowIdSet());
    }
};

TEST_F(ModelIdsTest, anIdIsNeverGivenOutTwice)
{
    Writer to = writer();
    const qint64 first = insertKeyword();
    Sql::execute(connection(), "DELETE FROM RKKeyword WHERE modelId=?", first);
    ModelIds::release(to, "RKKeyword", {first});
    EXPECT_EQ(insertKeyword(), first + 1);
}

TEST_F(ModelIdsTest, aCounterThatLagsBehindTheRowsIsPassed)
{
    Writer to = writer();
    AdminData::setText(to, u"RKKeyword"_s, u"nextModelId"_s, u"2"_s, AdminData::kInteger);
    const qint64 highest = number("SELECT max(modelId) FROM RKKeyword WHERE modelId>?", 0);
    EXPECT_EQ(insertKeyword(), highest + 1);
    EXPECT_EQ(AdminData::text(connection(), u"RKKeyword"_s, u"nextModelId"_s),
              QString::number(highest + 2));
}

TEST_F(ModelIdsTest, theSetOfAllIdsFollows)
{
    Writer to = writer();
    const qint64 id = insertKeyword();
    EXPECT_TRUE(allIds().contains(id));
    ModelIds::release(to, "RKKeyword", {id});
    EXPECT_FALSE(allIds().contains(id));
    EXPECT_TRUE(allIds().contains(1));
}

TEST_F(ModelIdsTest, aSetOfAllIdsThatCannotBeReadIsMadeAnew)
{
    Writer to = writer();
    AdminData::setBlob(to, u"RKKeyword"_s, u"allModelIds"_s, QByteArrayLiteral("rubbish"));
    const qint64 id = insertKeyword();
    EXPECT_TRUE(allIds().containsAll(RowIdSet({1, 2, 3, 4, 5, 6, id})));
}

TEST_F(ModelIdsTest, tablesOfTheOtherDatabasesAreCountedToo)
{
    Writer to = writer();
    EXPECT_EQ(ModelIds::allocate(to, "RKUniqueString"), 1);
    EXPECT_EQ(ModelIds::allocate(to, "RKUniqueString"), 2);
    EXPECT_EQ(ModelIds::allocate(to, "RKImageProxyState"), 1);
}

TEST_F(ModelIdsTest, aCounterAtTheEndOfAllNumbersIsDamageAndNotAnOverflow)
{
    Writer to = writer();
    AdminData::setText(
        to, u"RKKeyword"_s, u"nextModelId"_s, u"9223372036854775807"_s, AdminData::kInteger);
    EXPECT_THROW(static_cast<void>(ModelIds::allocate(to, "RKKeyword")), SQLite::Exception);
}

TEST_F(ModelIdsTest, aRowAtTheEndOfAllNumbersLeavesItsCounterAsItIs)
{
    Writer to = writer();
    AdminData::setText(to, u"RKKeyword"_s, u"nextModelId"_s, u"2"_s, AdminData::kInteger);
    Sql::execute(connection(),
                 "INSERT INTO RKKeyword(modelId,name) VALUES(?,'x')",
                 std::numeric_limits<qint64>::max());
    ModelIds::mend(to);
    EXPECT_EQ(AdminData::text(connection(), u"RKKeyword"_s, u"nextModelId"_s), u"2"_s);
}
