#include "ByteAverages.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

TEST(ByteAveragesTest, eachPixelIsTheMeanOfASquare)
{
    QImage picture(32, 16, QImage::Format_RGB888);
    picture.fill(QColor(255, 255, 255));
    for (int y = 0; y < 16; ++y) {
        for (int x = 16; x < 32; ++x) {
            picture.setPixelColor(x, y, x % 2 == 0 ? QColor(100, 0, 7) : QColor(51, 3, 7));
        }
    }
    const QImage means = ByteAverages::of(picture, 16);
    ASSERT_EQ(means.size(), QSize(2, 1));
    EXPECT_EQ(means.pixelColor(0, 0), QColor(255, 255, 255));
    EXPECT_EQ(means.pixelColor(1, 0), QColor(76, 2, 7)); // 75.5 and 1.5 are rounded up
}

TEST(ByteAveragesTest, squaresThatAreCutAreFilledByTheLastPixels)
{
    QImage picture(9, 10, QImage::Format_RGB888);
    picture.fill(QColor(0, 0, 0));
    picture.setPixelColor(8, 0, QColor(80, 0, 0));
    picture.setPixelColor(0, 9, QColor(0, 64, 0));
    const QImage means = ByteAverages::of(picture, 8);
    ASSERT_EQ(means.size(), QSize(2, 2));
    EXPECT_EQ(means.pixelColor(0, 0), QColor(0, 0, 0));
    EXPECT_EQ(means.pixelColor(1, 0), QColor(10, 0, 0));
    EXPECT_EQ(means.pixelColor(0, 1), QColor(0, 7, 0));
    EXPECT_EQ(means.pixelColor(1, 1), QColor(0, 0, 0));
}

TEST(ByteAveragesTest, eachMeanIsRoundedAsADivisionIs)
{
    const QImage picture = BitmapImage::toImage(ImageBuilder::noise({48, 48}));
    for (int side = 1; side <= 16; ++side) {
        const QImage means = ByteAverages::of(picture, side);
        for (int place = 0; place < 48 / side; ++place) {
            int sum = 0;
            for (int pixel = 0; pixel < side * side; ++pixel) {
                sum += qGreen(picture.pixel(place * side + pixel % side, pixel / side));
            }
            EXPECT_EQ(qGreen(means.pixel(place, 0)), (sum + side * side / 2) / (side * side))
                << side;
        }
    }
}

TEST(ByteAveragesTest, aPictureAveragedBySquaresOfOnePixelIsItself)
{
    const QImage scene = BitmapImage::toImage(ImageBuilder::scene({33, 21}));
    EXPECT_TRUE(ByteAverages::of(scene, 1) == scene);
}
