#include "FileStructure.h"

#include "ImageBuilder.h"
#include "TiffStructure.h"

#include <QtEndian>

#include <gtest/gtest.h>

namespace
{

QByteArray big(quint32 number)
{
    const quint32 bytes = qToBigEndian(number);
    return {reinterpret_cast<const char*>(&bytes), 4};
}

QByteArray little(quint32 number)
{
    const quint32 bytes = qToLittleEndian(number);
    return {reinterpret_cast<const char*>(&bytes), 4};
}

bool isWhole(const QByteArray& bytes, FileType type = FileType::Raw)
{
    return !FileStructure::complaint(bytes, type).has_value();
}

QByteArray entry(quint16 tag, quint32 value)
{
    QByteArray bytes = little(tag).first(2) + little(4).first(2);
    return bytes + little(1) + little(value);
}

} // namespace

TEST(FileStructureTest, boxesMustEndWithinTheFile)
{
    const QByteArray start = big(16) + "ftypcrx " + big(1);
    EXPECT_TRUE(isWhole(start + big(12) + "mdat" + "data"));
    EXPECT_FALSE(isWhole(start + big(13) + "mdat" + "data"));
    EXPECT_FALSE(isWhole(start + big(7) + "mdat"));
    EXPECT_TRUE(isWhole(start + big(0) + "mdat" + "to the end"));
    EXPECT_FALSE(isWhole(start + big(1) + "mdat" + big(1) + big(0)));
}

TEST(FileStructureTest, aBoxOfAnyLengthIsMissedByItsLength)
{
    // A length of 64 bits that would lead around to the start.
    const QByteArray file =
        big(16) + "ftypcrx " + big(1) + big(1) + "mdat" + big(0xFFFFFFFF) + big(0xFFFFFFF4);
    const auto complaint = FileStructure::complaint(file, FileType::Raw);
    ASSERT_TRUE(complaint.has_value());
    EXPECT_TRUE(complaint->contains(QStringLiteral("18446744073709551588 bytes")))
        << qPrintable(*complaint);
}

TEST(FileStructureTest, fujiPartsMustLieInTheFile)
{
    QByteArray file = QByteArrayLiteral("FUJIFILMCCD-RAW ").leftJustified(84, '0');
    for (int part = 0; part < 3; ++part) {
        file += big(108) + big(10);
    }
    EXPECT_FALSE(isWhole(file));
    EXPECT_TRUE(isWhole(file + QByteArray(10, 'x')));
    EXPECT_FALSE(isWhole(file.first(90)));
}

TEST(FileStructureTest, heapDirectoryMustStandAtTheEnd)
{
    // One entry: type, length, offset from the heap's start at byte 26.
    const QByteArray head = QByteArray("II\x1a\0\0\0HEAPCCDR", 14).leftJustified(26, '\0');
    const QByteArray table = QByteArray("\1\0\5\x20", 4) + little(8) + little(0);
    const QByteArray whole = head + "8 bytes." + table + little(8);
    EXPECT_TRUE(isWhole(whole));
    EXPECT_FALSE(isWhole(whole.chopped(5)));
    EXPECT_FALSE(isWhole(head));
    EXPECT_FALSE(isWhole(head + QByteArray("\1\0\5\x20", 4) + little(500) + little(0) + little(0)));
}

TEST(FileStructureTest, panasonicDataNeedTheirBytes)
{
    QByteArray file("IIU\0\x08\0\0\0", 8);
    file += QByteArray("\4\0", 2) + entry(0x0002, 140) + entry(0x0003, 100) + entry(0x002D, 4) +
            entry(0x0118, 100) + little(0);
    file = file.leftJustified(100, '\0');
    EXPECT_TRUE(isWhole(file + QByteArray(16000, 'x')));
    EXPECT_FALSE(isWhole(file + QByteArray(15999, 'x')));
}

TEST(FileStructureTest, panasonicSidesOfAnySizeNeedTheirBytes)
{
    QByteArray file("IIU\0\x08\0\0\0", 8);
    file += QByteArray("\4\0", 2) + entry(0x0002, 0xFFFFFFFF) + entry(0x0003, 0xFFFFFFFF) +
            entry(0x002D, 4) + entry(0x0118, 100) + little(0);
    EXPECT_FALSE(isWhole(file.leftJustified(1000, '\0')));
}

TEST(FileStructureTest, stripsMustLieInTheFile)
{
    const QByteArray dng = ImageBuilder::dng(ImageBuilder::scene({32, 32}, Transfer::Linear));
    EXPECT_TRUE(isWhole(dng));
    EXPECT_FALSE(isWhole(dng.chopped(1)));
    EXPECT_FALSE(isWhole(dng.first(9)));
}

TEST(FileStructureTest, directoriesThatLeadInCirclesAreReadOnce)
{
    QByteArray file("II*\0\x08\0\0\0", 8);
    file += QByteArray("\1\0", 2) + entry(0x014A, 8) + little(8);
    const auto tiff = TiffStructure::parse(file);
    ASSERT_TRUE(tiff.has_value());
    EXPECT_EQ(tiff->directories().size(), 1);
}

TEST(FileStructureTest, entriesThatShareTheirValuesAreNotReadIntoManyTimesTheFile)
{
    constexpr quint16 kEntries = 2000;
    QByteArray file("II*\0\x08\0\0\0", 8);
    file += little(kEntries).first(2);
    for (quint16 i = 0; i < kEntries; ++i) {
        file += little(i).first(2) + little(1).first(2) + little(40000) + little(8);
    }
    file = file.leftJustified(50000, '\0');
    const auto tiff = TiffStructure::parse(file);
    ASSERT_TRUE(tiff.has_value());
    qsizetype values = 0;
    for (const TiffDirectory& directory : tiff->directories()) {
        for (const QList<quint64>& numbers : directory.numbers) {
            values += numbers.size();
        }
    }
    EXPECT_GT(values, 0);
    EXPECT_LE(values, file.size());
}

TEST(FileStructureTest, numbersOfAnyBytesAreReadWithinBounds)
{
    // Whatever the bytes say, nothing beyond them is read and the walk ends.
    const QByteArray dng = ImageBuilder::dng(ImageBuilder::scene({16, 16}, Transfer::Linear));
    for (qsizetype at = 4; at < 300; ++at) {
        for (const char value : {'\0', '\x7F', '\xFF'}) {
            QByteArray changed = dng;
            changed[at] = value;
            const auto tiff = TiffStructure::parse(changed);
            EXPECT_LE(tiff ? tiff->directories().size() : 0, 64);
        }
    }
}

TEST(FileStructureTest, emptyFileIsNotWhole)
{
    EXPECT_FALSE(isWhole({}, FileType::Unknown));
}
