#include "Upright.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

/// Three pixels wide, two high; their red values are 0 1 2 in the upper row, 3 4 5 below.
QImage sixPixels()
{
    QImage picture(3, 2, QImage::Format_RGB888);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            picture.setPixelColor(x, y, QColor(3 * y + x, 0, 0));
        }
    }
    return picture;
}

QList<int> redValues(const QImage& picture)
{
    QList<int> values;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            values.append(qRed(picture.pixel(x, y)));
        }
    }
    return values;
}

} // namespace

TEST(UprightTest, everyOrientationPutsTheStoredPixelsWhereTheyAreShown)
{
    const std::array<QList<int>, 8> shown{{{0, 1, 2, 3, 4, 5},
                                           {2, 1, 0, 5, 4, 3},
                                           {5, 4, 3, 2, 1, 0},
                                           {3, 4, 5, 0, 1, 2},
                                           {0, 3, 1, 4, 2, 5},
                                           {3, 0, 4, 1, 5, 2},
                                           {5, 2, 4, 1, 3, 0},
                                           {2, 5, 1, 4, 0, 3}}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QImage upright = Upright::turned(sixPixels(), orientation);
        EXPECT_EQ(redValues(upright), shown.at(static_cast<std::size_t>(orientation - 1)))
            << orientation;
        EXPECT_EQ(upright.size(), Upright::isTransposed(orientation) ? QSize(2, 3) : QSize(3, 2));
    }
}

TEST(UprightTest, whatIsShownGoesBackToWhereItIsStored)
{
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QImage upright = Upright::turned(sixPixels(), orientation);
        EXPECT_EQ(redValues(Upright::stored(upright, orientation)), redValues(sixPixels()))
            << orientation;
    }
}

TEST(UprightTest, whatIsNoOrientationTurnsNothing)
{
    for (const int orientation : {-1, 0, 9, 255}) {
        EXPECT_EQ(redValues(Upright::turned(sixPixels(), orientation)), redValues(sixPixels()));
        EXPECT_EQ(Upright::rotation(orientation), 0);
        EXPECT_FALSE(Upright::isTransposed(orientation));
    }
}

TEST(UprightTest, theTurnIsToldInClockwiseDegrees)
{
    EXPECT_EQ(Upright::rotation(1), 0);
    EXPECT_EQ(Upright::rotation(3), 180);
    EXPECT_EQ(Upright::rotation(6), 90);
    EXPECT_EQ(Upright::rotation(8), 270);
}
