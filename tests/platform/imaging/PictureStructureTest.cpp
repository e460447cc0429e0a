#include "PictureStructure.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

namespace
{

bool isTakenForWhole(const QByteArray& bytes)
{
    return !PictureStructure::complaint(FileBytes(bytes)).has_value();
}

QByteArray saved(const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    EXPECT_TRUE(BitmapImage::toImage(ImageBuilder::scene({13, 7})).save(&buffer, format)) << format;
    return bytes;
}

/// The shortest file is whole, and each that lacks bytes of it is not.
void expectEveryByteNeeded(const QByteArray& bytes)
{
    EXPECT_TRUE(isTakenForWhole(bytes));
    EXPECT_TRUE(isTakenForWhole(bytes + "what other programs append"));
    for (qsizetype size = 8; size < bytes.size(); ++size) {
        EXPECT_FALSE(isTakenForWhole(bytes.first(size))) << size << " of " << bytes.size();
    }
}

QByteArray tga(char type, const QByteArray& pixels)
{
    const char header[]{3, 0, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 2, 0, 24, 0};
    return QByteArray(header, sizeof(header)) + "abc" + pixels;
}

} // namespace

TEST(PictureStructureTest, aPngEndsWithItsLastChunk)
{
    expectEveryByteNeeded(saved("PNG"));
}

TEST(PictureStructureTest, aWebPicturesLengthIsStated)
{
    expectEveryByteNeeded(saved("WEBP"));
}

TEST(PictureStructureTest, aBitmapHasAllItsRows)
{
    expectEveryByteNeeded(saved("BMP"));
}

TEST(PictureStructureTest, aCompressedBitmapHasTheLengthThatItStates)
{
    QByteArray bytes = saved("BMP");
    constexpr qsizetype kCompression = 30;
    constexpr qsizetype kLength = 34;
    bytes[kCompression] = 1;
    bytes.replace(kLength, 4, QByteArray("\x20\0\0\0", 4));
    const qsizetype start = static_cast<quint8>(bytes.at(10));
    EXPECT_TRUE(isTakenForWhole(bytes.first(start + 32)));
    EXPECT_FALSE(isTakenForWhole(bytes.first(start + 31)));
}

TEST(PictureStructureTest, aGifEndsWithItsTrailer)
{
    const char one[]{'G',        'I',        'F',  '8', '9', 'a', 1, 0, 1, 0,
                     char(0x80), 0,          0,    0,   0,   0,   1, 1, 1,    // two colours
                     0x21,       char(0xF9), 4,    0,   0,   0,   0, 0,       // an extension
                     0x2C,       0,          0,    0,   0,   1,   0, 1, 0, 0, // the image
                     2,          2,          0x44, 1,   0,   0x3B};
    expectEveryByteNeeded(QByteArray(one, sizeof(one)));
}

TEST(PictureStructureTest, aTargaHasAllItsPixels)
{
    expectEveryByteNeeded(tga(2, QByteArray(qsizetype{4} * 2 * 3, 'p')));
}

TEST(PictureStructureTest, aTargaOfRunsHasRunsForAllItsPixels)
{
    // Five times one pixel, then three pixels.
    expectEveryByteNeeded(tga(10, QByteArray("\x84pqr\x02pqrpqrpqr", 14)));
}

TEST(PictureStructureTest, numbersOfAnyBytesAreReadWithinBounds)
{
    for (const QByteArray& mark :
         {QByteArray("BM"), QByteArray("GIF89a"), QByteArray("\0\0\x0A", 3)}) {
        for (int length = 3; length < 200; ++length) {
            EXPECT_FALSE(isTakenForWhole((mark + QByteArray(length, '\xFF')).first(length)));
        }
    }
}
