#include "TiffTags.h"

#include "TiffReader.h"

#include <gtest/gtest.h>

TEST(TiffTagsTest, tagsStandInAscendingOrder)
{
    TiffTags directory;
    directory.setShorts(300, {3});
    directory.setShorts(100, {1});
    directory.setShorts(200, {2});
    const QByteArray bytes = directory.file();
    QList<int> tags;
    for (int i = 0; i < 3; ++i) {
        tags.append(qFromLittleEndian<quint16>(bytes.constData() + 10 + qsizetype{12} * i));
    }
    EXPECT_EQ(tags, QList<int>({100, 200, 300}));
}

TEST(TiffTagsTest, upToFourBytesStandInTheEntryItself)
{
    TiffTags directory;
    directory.setBytes(1, QByteArray("\1\2\3\4", 4));
    directory.setShorts(2, {7, 8});
    directory.setBytes(3, QByteArray("\1\2\3\4\5", 5));
    const TiffReader reader(directory.file());
    const auto entries = reader.first();
    EXPECT_EQ(entries.at(1).position, 10 + 8);
    EXPECT_EQ(reader.value(entries.at(1), 3), 4U);
    EXPECT_EQ(reader.value(entries.at(2), 1), 8U);
    EXPECT_GT(entries.at(3).position, 10 + 3 * 12);
    EXPECT_EQ(reader.bytes(entries.at(3).position, 5), QByteArray("\1\2\3\4\5", 5));
}

TEST(TiffTagsTest, valuesStartAtEvenOffsets)
{
    TiffTags directory;
    directory.setBytes(1, QByteArray(5, 'a'));
    directory.setBytes(2, QByteArray(7, 'b'));
    directory.setRationals(3, {{1, 3}});
    const TiffReader reader(directory.file());
    for (const auto& [tag, entry] : reader.first()) {
        EXPECT_EQ(entry.position % 2, 0) << "tag " << tag;
    }
}

TEST(TiffTagsTest, textsEndInNulAndCountIt)
{
    TiffTags directory;
    directory.setAscii(1, "Corvane");
    const TiffReader reader(directory.file());
    const auto entry = reader.first().at(1);
    EXPECT_EQ(entry.count, 8U);
    EXPECT_EQ(reader.bytes(entry.position, 8), QByteArray("Corvane\0", 8));
}

TEST(TiffTagsTest, fractionsKeepSignAndParts)
{
    TiffTags directory;
    directory.setRationals(1, {{1, 400}, {300, 1}});
    directory.setSignedRationals(2, {{-1778, 10000}});
    const TiffReader reader(directory.file());
    const auto entries = reader.first();
    EXPECT_EQ(reader.value(entries.at(1), 1), 400U);
    EXPECT_EQ(reader.value(entries.at(1), 2), 300U);
    EXPECT_EQ(static_cast<qint32>(reader.value(entries.at(2))), -1778);
}

TEST(TiffTagsTest, settingATagAgainReplacesIt)
{
    TiffTags directory;
    directory.setLongs(1, {5});
    directory.setLongs(1, {6});
    const TiffReader reader(directory.file());
    EXPECT_EQ(reader.first().size(), 1U);
    EXPECT_EQ(reader.value(reader.first().at(1)), 6U);
}

TEST(TiffTagsTest, directoriesHangWhereTheirTagsPoint)
{
    TiffTags deepest;
    deepest.setAscii(9, "deepest of all");
    TiffTags below;
    below.setAscii(5, "below");
    below.addDirectory(6, deepest);
    TiffTags other;
    other.setLongs(7, {77, 78});
    TiffTags top;
    top.setAscii(1, "a text before");
    top.addDirectory(2, below);
    top.addDirectory(3, other);

    const TiffReader reader(top.file());
    const auto first = reader.first();
    const auto second = reader.directory(reader.value(first.at(2)));
    EXPECT_EQ(reader.bytes(second.at(5).position, 5), "below");
    const auto third = reader.directory(reader.value(second.at(6)));
    EXPECT_EQ(reader.bytes(third.at(9).position, 14), "deepest of all");
    EXPECT_EQ(reader.value(reader.directory(reader.value(first.at(3))).at(7), 1), 78U);
}

TEST(TiffTagsTest, lengthSaysHowManyBytesThereWillBe)
{
    TiffTags below;
    below.setBytes(1, QByteArray(9, 'x'));
    TiffTags top;
    top.setAscii(1, "odd length");
    top.addDirectory(2, below);
    EXPECT_EQ(top.length(), top.serialised(8).size());
    EXPECT_EQ(top.length(), top.serialised(100000).size());
    EXPECT_EQ(top.length() % 2, 0);
}

TEST(TiffTagsTest, aFileStartsWithTheHeaderOfLittleEndianTiff)
{
    TiffTags directory;
    directory.setShorts(1, {1});
    const TiffReader reader(directory.file());
    EXPECT_TRUE(reader.hasHeader());
    EXPECT_EQ(directory.file().mid(4, 4), QByteArray("\10\0\0\0", 4));
}
