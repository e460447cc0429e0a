#include "SmallPicture.h"

#include "ImageBuilder.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace
{

/// Lightness that grows evenly from left to right and from top to bottom.
Bitmap ramp(QSize size)
{
    Bitmap bitmap(size.width(), size.height(), Transfer::Srgb);
    for (int y = 0; y < size.height(); ++y) {
        const auto row = bitmap.row(y);
        for (int x = 0; x < size.width(); ++x) {
            const double value = (x + 0.5) / size.width() + (y + 0.5) / size.height();
            std::fill_n(&row[3 * static_cast<std::size_t>(x)],
                        3,
                        static_cast<quint16>(value * 65535.0 / 2.0));
        }
    }
    return bitmap;
}

void expectRamp(const SmallPicture& small)
{
    for (int y = 0; y < small.height(); ++y) {
        for (int x = 0; x < small.width(); ++x) {
            const double expected = (x + 0.5) / small.width() + (y + 0.5) / small.height();
            ASSERT_NEAR(double{small.at(x, y)}, expected / 2.0, 0.0015) << x << ' ' << y;
        }
    }
}

} // namespace

TEST(SmallPictureTest, picturesOfAllSizesLieInRegister)
{
    for (const QSize size : {QSize(97, 70), QSize(100, 75), QSize(128, 96), QSize(160, 107)}) {
        const SmallPicture small = SmallPicture::of(ramp(size));
        EXPECT_EQ(small.width(), 96) << size.width();
        expectRamp(small);
    }
}

TEST(SmallPictureTest, averagesAreByArea)
{
    const SmallPicture small = SmallPicture::of(ramp({150, 100}));
    expectRamp(small.averaged({32, 21}));
    expectRamp(small.averaged({31, 20}));
    const SmallPicture same = small.averaged({500, 500});
    EXPECT_EQ(same.values(), small.values());
}

TEST(SmallPictureTest, whatIsSmallStaysAsItIs)
{
    const SmallPicture small = SmallPicture::of(ramp({90, 60}));
    EXPECT_EQ(small.width(), 90);
    EXPECT_EQ(small.height(), 60);
    expectRamp(small);
    EXPECT_TRUE(SmallPicture::of(QImage()).isNull());
}
