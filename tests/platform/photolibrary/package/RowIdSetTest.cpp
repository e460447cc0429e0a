#include "RowIdSet.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

QByteArray wordsOf(int count)
{
    return QByteArray(count, '\1');
}

} // namespace

TEST(RowIdSetTest, anEmptySetIsThreeBytes)
{
    EXPECT_EQ(RowIdSet().toBlob().toHex(), "010000");
}

TEST(RowIdSetTest, eachWordIsStoredPlusOneInAnExactRowOfBytes)
{
    EXPECT_EQ(RowIdSet({13, 15, 17}).toBlob(),
              QByteArray::fromHex("010001000381c00a") + wordsOf(31));
}

TEST(RowIdSetTest, idsAtTheEdgesOfWordsAndChunksAreKept)
{
    const QList<qint64> ids{0, 31, 32, 1023, 1024, 99999, 5000000000};
    const std::optional<RowIdSet> again = RowIdSet::fromBlob(RowIdSet(ids).toBlob());
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->ids(), ids);
}

TEST(RowIdSetTest, aFullWordNeedsThirtyThreeBits)
{
    QList<qint64> ids;
    for (qint64 id = 0; id < 32; ++id) {
        ids.append(id);
    }
    const QByteArray blob = RowIdSet(ids).toBlob();
    EXPECT_EQ(blob,
              QByteArray::fromHex("010001002080808080"
                                  "10") +
                  wordsOf(31));
    EXPECT_EQ(RowIdSet::fromBlob(blob)->ids(), ids);
}

TEST(RowIdSetTest, cachedNumbersThatAreUnknownDoNotMatter)
{
    const QByteArray blob = QByteArray::fromHex("01ffffffff0f0100ffffffff0f81a005") + wordsOf(31);
    const std::optional<RowIdSet> set = RowIdSet::fromBlob(blob);
    ASSERT_TRUE(set.has_value());
    EXPECT_EQ(set->ids(), (QList<qint64>{12, 14, 16}));
}

TEST(RowIdSetTest, aChunkWithoutIdsIsNoChunk)
{
    const std::optional<RowIdSet> set =
        RowIdSet::fromBlob(QByteArray::fromHex("0100010000") + wordsOf(32));
    ASSERT_TRUE(set.has_value());
    EXPECT_TRUE(set->isEmpty());
    EXPECT_EQ(*set, RowIdSet());
}

TEST(RowIdSetTest, everyCutOffSetIsRefused)
{
    const QByteArray blob = RowIdSet({1, 40, 2000}).toBlob();
    for (qsizetype length = 0; length < blob.size(); ++length) {
        EXPECT_FALSE(RowIdSet::fromBlob(blob.left(length)).has_value()) << length;
    }
    EXPECT_FALSE(RowIdSet::fromBlob(blob + '\0').has_value()) << "bytes behind the end";
}

TEST(RowIdSetTest, bytesThatAreNoSetAreRefused)
{
    const QByteArray chunk = QByteArray::fromHex("0001") + wordsOf(31);
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("020000"))) << "another format";
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("010001") + chunk + '\0'))
        << "a word of zero";
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("010001") + chunk +
                                    QByteArray::fromHex("8180808010")))
        << "a word beyond 32 bits";
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("0100ffffffffffffff7f")))
        << "more chunks than bytes";
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("01008080808080808080808001")))
        << "an endless number";
    EXPECT_FALSE(RowIdSet::fromBlob(QByteArray::fromHex("010001ffffffffffffff7f01") + wordsOf(32)))
        << "ids beyond any row";
}

TEST(RowIdSetTest, whateverIsReadIsWrittenAsTheSameSet)
{
    std::mt19937 random(7);
    const QByteArray blob = RowIdSet({1, 5, 31, 32, 1023, 1024, 99999}).toBlob();
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes = blob;
        for (int change = 0; change < 2; ++change) {
            bytes[static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()))] =
                static_cast<char>(random() & 0xFFU);
        }
        if (const std::optional<RowIdSet> set = RowIdSet::fromBlob(bytes)) {
            ++accepted;
            ASSERT_EQ(RowIdSet::fromBlob(set->toBlob()), set);
            ASSERT_EQ(RowIdSet(set->ids()), *set);
        }
    }
    EXPECT_GT(accepted, 100);
}

TEST(RowIdSetTest, removingTheLastIdLeavesAnEmptySet)
{
    RowIdSet set({7, 2048});
    set.remove(7);
    set.remove(8);
    EXPECT_FALSE(set.contains(7));
    EXPECT_TRUE(set.contains(2048));
    set.remove(2048);
    EXPECT_EQ(set.toBlob(), RowIdSet().toBlob());
}

TEST(RowIdSetTest, negativeIdsAreNoRows)
{
    RowIdSet set({-1, -1024, 3});
    set.remove(-3);
    EXPECT_EQ(set.ids(), QList<qint64>{3});
    EXPECT_FALSE(set.contains(-1));
}
