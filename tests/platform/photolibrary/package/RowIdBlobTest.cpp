#include "RowIdBlob.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

QByteArray emptyWords(int count)
{
    return QByteArray(count, '\1');
}

/// Ids of eight chunks, dense ones or sparse ones. From number 128 on a chunk's number takes two
/// bytes.
RowIdSet randomSet(std::mt19937& random, int most)
{
    constexpr unsigned kFirst = 124 * 1024;
    constexpr unsigned kIds = 8 * 1024;
    RowIdSet set;
    for (auto left = static_cast<int>(random() % static_cast<unsigned>(most)); left > 0; --left) {
        set.insert(static_cast<qint64>(kFirst + random() % kIds));
    }
    return set;
}

/// Chunks 0, 7 and 9, each of them with its first id.
QByteArray threeChunks()
{
    return RowIdSet({0, 7168, 9216}).toBlob();
}

} // namespace

TEST(RowIdBlobTest, whatIsAddedIsWrittenAsTheWholeSetWouldBe)
{
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        const RowIdSet before = randomSet(random, 20000);
        const RowIdSet ids = randomSet(random, 4);
        RowIdSet after = before;
        after.unite(ids);
        ASSERT_EQ(RowIdBlob::united(before.toBlob(), ids), after.toBlob());
    }
}

TEST(RowIdBlobTest, whatIsTakenIsWrittenAsTheWholeSetWouldBe)
{
    std::mt19937 random(11);
    for (int round = 0; round < 2000; ++round) {
        const RowIdSet before = randomSet(random, 30);
        const RowIdSet ids = randomSet(random, 20000);
        RowIdSet after = before;
        after.subtract(ids);
        ASSERT_EQ(RowIdBlob::without(before.toBlob(), ids), after.toBlob());
    }
}

TEST(RowIdBlobTest, aSetIsEmptyOnceItsLastChunkHasGone)
{
    const RowIdSet first({3});
    const RowIdSet second({70000});
    const QByteArray blob = RowIdSet({3, 70000}).toBlob();
    const std::optional<QByteArray> one = RowIdBlob::without(blob, first);
    ASSERT_TRUE(one.has_value());
    EXPECT_FALSE(RowIdBlob::isEmpty(*one));
    const std::optional<QByteArray> none = RowIdBlob::without(*one, second);
    ASSERT_TRUE(none.has_value());
    EXPECT_TRUE(RowIdBlob::isEmpty(*none));
}

TEST(RowIdBlobTest, whatChangesNothingKeepsEveryByte)
{
    // Its total is known, which a set that is written anew does not say.
    const QByteArray blob = QByteArray::fromHex("010301000381c00a") + emptyWords(31);
    EXPECT_EQ(RowIdBlob::united(blob, RowIdSet({13, 17})), blob);
    EXPECT_EQ(RowIdBlob::without(blob, RowIdSet({14, 4711})), blob);
}

TEST(RowIdBlobTest, cachedNumbersDoNotOutliveAChange)
{
    const QByteArray blob = QByteArray::fromHex("010301000381c00a") + emptyWords(31);
    EXPECT_EQ(RowIdBlob::united(blob, RowIdSet({40})), RowIdSet({13, 15, 17, 40}).toBlob());
    EXPECT_EQ(RowIdBlob::without(blob, RowIdSet({13})), RowIdSet({15, 17}).toBlob());
}

TEST(RowIdBlobTest, otherChunksKeepTheirBytes)
{
    // That of number 7 does not know how many ids it has.
    QByteArray blob = threeChunks();
    const qsizetype count = blob.indexOf(QByteArray::fromHex("070102")) + 1;
    blob.replace(count, 1, QByteArray::fromHex("ffffffff0f"));
    const std::optional<QByteArray> united = RowIdBlob::united(blob, RowIdSet({9217}));
    ASSERT_TRUE(united.has_value());
    EXPECT_EQ(united->left(united->size() - emptyWords(33).size()),
              blob.left(blob.size() - emptyWords(33).size()));
    EXPECT_EQ(RowIdSet::fromBlob(*united), RowIdSet({0, 7168, 9216, 9217}));
}

TEST(RowIdBlobTest, chunksThatDoNotRiseAreBroughtInOrder)
{
    const QByteArray one = QByteArray::fromHex("0101") + QByteArray(1, '\2') + emptyWords(31);
    const QByteArray zero = QByteArray::fromHex("0001") + QByteArray(1, '\2') + emptyWords(31);
    const QByteArray blob = QByteArray::fromHex("010002") + one + zero;
    EXPECT_EQ(RowIdBlob::united(blob, RowIdSet({1})), RowIdSet({0, 1, 1024}).toBlob());
    EXPECT_EQ(RowIdBlob::without(blob, RowIdSet({1024})), RowIdSet({0}).toBlob());
}

TEST(RowIdBlobTest, everyCutOffSetIsRefused)
{
    const QByteArray blob = threeChunks();
    for (qsizetype length = 0; length < blob.size(); ++length) {
        EXPECT_FALSE(RowIdBlob::united(blob.left(length), RowIdSet({1})).has_value()) << length;
        EXPECT_FALSE(RowIdBlob::isEmpty(blob.left(length))) << length;
    }
    EXPECT_FALSE(RowIdBlob::united(blob + '\0', RowIdSet({1})).has_value()) << "bytes behind it";
}

TEST(RowIdBlobTest, bytesThatAreNoSetAreRefused)
{
    const RowIdSet ids({1});
    EXPECT_FALSE(RowIdBlob::united(QByteArray::fromHex("020000"), ids)) << "another format";
    EXPECT_FALSE(RowIdBlob::without(QByteArray::fromHex("010001000100") + emptyWords(31), ids))
        << "a word of zero in the chunk that changes";
    EXPECT_FALSE(RowIdBlob::united(QByteArray::fromHex("0100ffffffffffffff7f"), ids))
        << "more chunks than bytes";
}
