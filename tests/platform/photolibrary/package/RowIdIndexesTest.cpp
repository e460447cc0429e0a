#include "RowIdIndexes.h"

#include "EventRows.h"
#include "LibraryFixture.h"
#include "RowIdSet.h"

#include <QMap>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace
{

using Blobs = QMap<QString, QByteArray>;

/// All sets of the library's indexes by table, index and value.
Blobs allSets(Connection& connection)
{
    Blobs result;
    for (const char* table : {"RKVersion_RidIndexes",
                              "RKMaster_RidIndexes",
                              "RKAlbum_RidIndexes",
                              "RKFolder_RidIndexes",
                              "RKAlbumVersion_RidIndexes",
                              "RKImageProxyState_RidIndexes",
                              "RKIptc_RidIndexes",
                              "RKExif_RidIndexes"}) {
        const std::string sql = std::string("SELECT indexName,value,ridIndex FROM ") + table;
        SQLite::Statement rows(connection.database(), sql);
        while (rows.executeStep()) {
            const QString index = Sql::text(rows.getColumn(0));
            result.insert(QLatin1StringView(table) + '/'_L1 + index + '/'_L1 +
                              Sql::text(rows.getColumn(1)),
                          Sql::blob(rows.getColumn(2)));
        }
    }
    return result;
}

} // namespace

class RowIdIndexesTest : public LibraryFixture
{
};

TEST(RealLibraryIndexesTest, everySetIsMadeAnewByteForByte)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    Connection& connection = library.connection();
    const Blobs before = allSets(connection);
    ASSERT_GT(before.size(), 100);
    connection.beginImmediate();
    Changes changes;
    Writer writer{connection, changes, 0};
    RowIdIndexes::recomputeAll(writer);
    const Blobs after = allSets(connection);
    EXPECT_EQ(after.keys(), before.keys());
    for (auto set = before.cbegin(); set != before.cend(); ++set) {
        // Closures of folders carry other cached numbers of ids.
        if (set.key().contains("Closure"_L1)) {
            EXPECT_EQ(RowIdSet::fromBlob(after.value(set.key())), RowIdSet::fromBlob(*set))
                << set.key().toStdString();
        } else {
            EXPECT_EQ(after.value(set.key()).toHex(), set->toHex()) << set.key().toStdString();
        }
    }
}

TEST(RealLibraryIndexesTest, aLibraryOfTheApplicationItselfHasNoMismatch)
{
    RealLibrary library;
    if (!library.isPresent()) {
        return;
    }
    EXPECT_EQ(RowIdIndexes::mismatches(library.connection()).join('\n'_L1).toStdString(), "");
}

TEST_F(RowIdIndexesTest, rowsThatAreAddedAndRemovedLeaveTheIndexesAsTheyWere)
{
    Writer to = writer();
    const Photo photo = addPhoto(EventRows::createEvent(to, u"One"_s));
    expectSoundIndexes();
    const QStringList before = snapshot();
    RowIdIndexes::removeRows(to, "RKVersion", {photo.visible});
    EXPECT_FALSE(RowIdIndexes::mismatches(connection()).isEmpty());
    RowIdIndexes::addRows(to, "RKVersion", {photo.visible});
    EXPECT_EQ(snapshot(), before);
}

TEST_F(RowIdIndexesTest, theRowOfAnEmptySetGoes)
{
    Writer to = writer();
    RowIdIndexes::add(to, "RKMaster", u"imageFormat"_s, 42, {5, 6});
    RowIdIndexes::remove(to, "RKMaster", u"imageFormat"_s, 42, {5});
    const char* const rows = "SELECT count(*) FROM RKMaster_RidIndexes WHERE value=?";
    EXPECT_EQ(number(rows, 42), 1);
    RowIdIndexes::remove(to, "RKMaster", u"imageFormat"_s, 42, {6, 7});
    EXPECT_EQ(number(rows, 42), 0);
}

TEST_F(RowIdIndexesTest, rowsWithoutAValueAreASetOfTheirOwn)
{
    Writer to = writer();
    RowIdIndexes::add(to, "RKMaster", u"burstUuid"_s, QVariant(), {9});
    EXPECT_EQ(Sql::firstText(connection(),
                             "SELECT value FROM RKMaster_RidIndexes WHERE indexName=?",
                             u"burstUuid"_s),
              u"<*null*>"_s);
}

TEST_F(RowIdIndexesTest, eachOfManyValuesHasASetOfItsOwn)
{
    constexpr int kValues = 40;
    for (int id = 1; id <= 2 * kValues; ++id) {
        const int value = id % kValues;
        Sql::execute(connection(),
                     "INSERT INTO RKMaster(modelId,uuid,fileVolumeUuid,faceDetectionState,type)"
                     " VALUES(?,?,?,?,NULL)",
                     id,
                     u"m%1"_s.arg(id),
                     u"volume %1"_s.arg(value),
                     value);
    }
    const RowIdCollection::Sets sets =
        RowIdCollection::ofTable(connection(), RowIdCollection::sourceOf("RKMaster"));
    for (int value = 0; value < kValues; ++value) {
        const QList<qint64> rows = value == 0
                                       ? QList<qint64>{kValues, 2LL * kValues}
                                       : QList<qint64>{value, static_cast<qint64>(value) + kValues};
        EXPECT_EQ(sets.value({u"fileVolumeUuid"_s, u"volume %1"_s.arg(value)}).ids(), rows);
        EXPECT_EQ(sets.value({u"faceDetectionState"_s, QString::number(value)}).ids(), rows);
    }
    EXPECT_EQ(sets.value({u"type"_s, u"<*null*>"_s}).ids().size(), 2 * kValues);
}

TEST_F(RowIdIndexesTest, aSetThatCannotBeReadIsNeverWrittenOver)
{
    Writer to = writer();
    Sql::execute(connection(),
                 "INSERT INTO RKMaster_RidIndexes(indexName,value,ridIndex) VALUES(?,?,?)",
                 u"type"_s,
                 u"IMGT"_s,
                 QByteArrayLiteral("\x01\x00\x05"));
    EXPECT_THROW(RowIdIndexes::add(to, "RKMaster", u"type"_s, u"IMGT"_s, {1}), SQLite::Exception);
    EXPECT_EQ(RowIdIndexes::mismatches(connection()).size(), 1);
}

TEST_F(RowIdIndexesTest, aChangeBehindTheIndexIsTold)
{
    Writer to = writer();
    const Photo photo = addPhoto(EventRows::createEvent(to, u"One"_s));
    Sql::execute(connection(), "UPDATE RKVersion SET isFlagged=1 WHERE modelId=?", photo.visible);
    const QString lines = RowIdIndexes::mismatches(connection()).join('\n'_L1);
    EXPECT_TRUE(lines.contains("isFlagged is \"1\" is missing"_L1)) << lines.toStdString();
    EXPECT_TRUE(lines.contains("isFlagged is \"0\" holds rows"_L1)) << lines.toStdString();
    RowIdIndexes::recomputeAll(to);
    expectSoundIndexes();
}

TEST_F(RowIdIndexesTest, aChangeThatIsFollowedWritesOnlyTheSetsThatItTouches)
{
    Writer to = writer();
    const Photo photo = addPhoto(EventRows::createEvent(to, u"One"_s));
    sqlite3* const database = connection().database().getHandle();
    const int before = sqlite3_total_changes(database);
    RowIdIndexes::follow(to, "RKVersion", {photo.visible}, [&] {
        Sql::execute(
            connection(), "UPDATE RKVersion SET isFlagged=1 WHERE modelId=?", photo.visible);
    });
    // The row itself, the set of those with a flag and of those without.
    EXPECT_EQ(sqlite3_total_changes(database) - before, 3);
    expectSoundIndexes();
}

TEST_F(RowIdIndexesTest, stringIdsThatAreNoLongerUsedMayStay)
{
    Writer to = writer();
    RowIdIndexes::add(to, "RKIptcProperty", u"propertyKey"_s, u"Byline"_s, {77});
    expectSoundIndexes();
}

TEST_F(RowIdIndexesTest, foldersThatAreNoLongerThereMayStayInAClosure)
{
    Writer to = writer();
    ASSERT_GT(number("SELECT count(*) FROM RKFolder_RidIndexes WHERE indexName ="
                     " 'folderIdClosure' AND ?1 > 0",
                     1),
              0);
    const QString folder = Sql::firstText(
        connection(), "SELECT value FROM RKFolder_RidIndexes WHERE indexName = 'folderIdClosure'");
    RowIdIndexes::add(to, "RKFolder", u"folderIdClosure"_s, folder, {4711});
    expectSoundIndexes();
}

TEST_F(RowIdIndexesTest, ratingsCountAsAtLeastAndOnlyOfWhatTheUserSees)
{
    Writer to = writer();
    const Photo photo = addPhoto(EventRows::createEvent(to, u"One"_s));
    Sql::execute(connection(),
                 "UPDATE RKVersion SET mainRating=3 WHERE modelId IN (?,?)",
                 photo.visible,
                 photo.imported);
    RowIdIndexes::recomputeAll(to);
    const QStringList values = Sql::texts(connection(),
                                          "SELECT value FROM RKVersion_RidIndexes WHERE "
                                          "indexName='mainRating' AND ridIndex=? ORDER BY value",
                                          RowIdSet({photo.visible}).toBlob());
    EXPECT_EQ(values.join(' '_L1), u">=0 >=1 >=2 >=3 all"_s);
}
