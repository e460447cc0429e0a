#include "ReducedPicture.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

#include <algorithm>

TEST(ReducedPictureTest, sidesAreFromTheWantedLengthToTwiceThat)
{
    for (const QSize size :
         {QSize(4000, 3000), QSize(511, 100), QSize(300, 5000), QSize(512, 512)}) {
        const Bitmap small = ReducedPicture::of(ImageBuilder::flat(size, 1000));
        const int longest = std::max(small.pixelsWide(), small.pixelsHigh());
        EXPECT_GE(longest, ReducedPicture::kLongestSide);
        EXPECT_LT(longest, 2 * ReducedPicture::kLongestSide);
        EXPECT_EQ(small.transfer(), Transfer::Linear);
    }
}

TEST(ReducedPictureTest, smallPicturesKeepTheirSizeAndThinOnesAPixel)
{
    EXPECT_EQ(ReducedPicture::of(ImageBuilder::flat({200, 1}, 1)).size(), QSize(200, 1));
    EXPECT_EQ(ReducedPicture::of(ImageBuilder::flat({4000, 2}, 1)).size(), QSize(2000, 1));
    EXPECT_TRUE(ReducedPicture::of(Bitmap()).isNull());
    EXPECT_TRUE(ReducedPicture::of(QImage()).isNull());
}

TEST(ReducedPictureTest, lightIsAveragedNotEncodedValues)
{
    QImage image(512, 512, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixelColor(x, y, (x + y) % 2 == 0 ? Qt::white : Qt::black);
        }
    }
    const Bitmap small = ReducedPicture::of(image);
    EXPECT_EQ(small.size(), QSize(256, 256));
    EXPECT_NEAR(small.row(100)[33], 32768, 1);
    const Bitmap same = ReducedPicture::of(BitmapImage::fromImage(image));
    EXPECT_TRUE(std::ranges::equal(small.row(7), same.row(7)));
}

TEST(ReducedPictureTest, eachPixelIsTheMeanOfItsOwnBlock)
{
    Bitmap bitmap(1024, 8, Transfer::Linear);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (std::size_t x = 0; x < 1024; ++x) {
            bitmap.row(y)[3 * x] = static_cast<quint16>(x);
            bitmap.row(y)[3 * x + 2] = static_cast<quint16>(1000 * y);
        }
    }
    const Bitmap small = ReducedPicture::of(bitmap);
    ASSERT_EQ(small.size(), QSize(256, 2));
    EXPECT_EQ(small.row(0)[30], 42); // 40..43, rounded up
    EXPECT_EQ(small.row(1)[32], 5500);
}

TEST(ReducedPictureTest, whatWholeBlocksDoNotCoverIsLeftOutAtBothEnds)
{
    Bitmap bitmap(515, 2, Transfer::Linear);
    bitmap.row(0)[3] = 400; // the second pixel is the first of a block
    EXPECT_EQ(ReducedPicture::of(bitmap).row(0)[0], 100);
}
