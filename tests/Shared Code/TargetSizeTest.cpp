#include "TargetSize.h"

#include "FakeDelegate.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

std::optional<QSize> scaled(QSize pixels, float factor)
{
    return targetSize(pixels, OutputSize{.scaleFactor = factor});
}

std::optional<QSize> longLimited(QSize pixels, qint64 limit)
{
    return targetSize(
        pixels,
        OutputSize{.fixedSize = true, .longSize = limit, .shortSize = 7, .longLocked = true});
}

std::optional<QSize> shortLimited(QSize pixels, qint64 limit)
{
    return targetSize(
        pixels,
        OutputSize{.fixedSize = true, .longSize = 7, .shortSize = limit, .shortLocked = true});
}

std::optional<QSize> bothLimited(QSize pixels, qint64 longSize, qint64 shortSize)
{
    return targetSize(pixels,
                      OutputSize{.fixedSize = true,
                                 .longSize = longSize,
                                 .shortSize = shortSize,
                                 .longLocked = true,
                                 .shortLocked = true});
}

TEST(TargetSizeTest, factorOneWithoutFixedSizeTakesThePictureAsItIs)
{
    EXPECT_TRUE(OutputSize{}.isOriginal());
    EXPECT_EQ(scaled({4000, 3000}, 1.0F), QSize(4000, 3000));
}

TEST(TargetSizeTest, factorOneWithFixedSizeIsNoOriginal)
{
    EXPECT_FALSE((OutputSize{.fixedSize = true}).isOriginal());
}

TEST(TargetSizeTest, aFactorScalesBothSides)
{
    EXPECT_EQ(scaled({4000, 3000}, 0.5F), QSize(2000, 1500));
    EXPECT_EQ(scaled({4000, 3000}, 2.0F), QSize(8000, 6000));
}

TEST(TargetSizeTest, aLongSideLimitedPortraitIsLimitedInHeight)
{
    EXPECT_EQ(longLimited({3000, 4000}, 1600), QSize(1200, 1600));
}

TEST(TargetSizeTest, aLongSideLimitedLandscapeIsLimitedInWidth)
{
    EXPECT_EQ(longLimited({6000, 4000}, 1500), QSize(1500, 1000));
}

TEST(TargetSizeTest, aShortSideLimitedLandscapeIsLimitedInHeight)
{
    EXPECT_EQ(shortLimited({6000, 4000}, 1000), QSize(1500, 1000));
}

TEST(TargetSizeTest, aShortSideLimitedPortraitIsLimitedInWidth)
{
    EXPECT_EQ(shortLimited({3000, 4000}, 1500), QSize(1500, 2000));
}

TEST(TargetSizeTest, aSquareIsLimitedOnEitherSide)
{
    EXPECT_EQ(longLimited({3000, 3000}, 1600), QSize(1600, 1600));
    EXPECT_EQ(shortLimited({3000, 3000}, 1000), QSize(1000, 1000));
}

TEST(TargetSizeTest, aPictureSmallerThanTheLimitKeepsItsSize)
{
    EXPECT_EQ(longLimited({800, 600}, 1600), QSize(800, 600));
    EXPECT_EQ(shortLimited({800, 600}, 1000), QSize(800, 600));
    EXPECT_EQ(bothLimited({800, 600}, 1600, 1200), QSize(800, 600));
}

TEST(TargetSizeTest, withNeitherSideLockedTheShortOneCountsAsLocked)
{
    const OutputSize wanted{.fixedSize = true, .longSize = 1600, .shortSize = 1000};
    EXPECT_EQ(targetSize({6000, 4000}, wanted), QSize(1500, 1000));
}

TEST(TargetSizeTest, withBothSidesLockedEachIsClampedByItself)
{
    EXPECT_EQ(bothLimited({3000, 3000}, 1600, 1000), QSize(1000, 1600));
    EXPECT_EQ(bothLimited({4000, 3000}, 1600, 1000), QSize(1600, 1000));
    EXPECT_EQ(bothLimited({3000, 4000}, 1600, 1000), QSize(1000, 1600));
    EXPECT_EQ(bothLimited({4000, 900}, 1600, 1000), QSize(1600, 900));
}

TEST(TargetSizeTest, theFactorPlaysNoPartInAFixedSize)
{
    const OutputSize wanted{
        .scaleFactor = 0.1F, .fixedSize = true, .longSize = 1600, .longLocked = true};
    EXPECT_EQ(targetSize({4000, 3000}, wanted), QSize(1600, 1200));
}

TEST(TargetSizeTest, aSideIsRoundedToNearest)
{
    EXPECT_EQ(longLimited({4001, 3000}, 1000), QSize(1000, 750)); // 749.81
    EXPECT_EQ(longLimited({4000, 2997}, 1000), QSize(1000, 749)); // 749.25
    EXPECT_EQ(scaled({5, 3}, 0.5F), QSize(3, 2));                 // 2.5 and 1.5
}

TEST(TargetSizeTest, aPositiveSideBelowHalfAPixelBecomesOne)
{
    EXPECT_EQ(longLimited({4000, 10}, 100), QSize(100, 1));
}

TEST(TargetSizeTest, nothingIsLeftOfAScaleOrALockedSideOfZero)
{
    EXPECT_EQ(scaled({4000, 3000}, 0.0F), std::nullopt);
    EXPECT_EQ(longLimited({4000, 3000}, 0), std::nullopt);
    EXPECT_EQ(shortLimited({4000, 3000}, 0), std::nullopt);
    EXPECT_EQ(bothLimited({4000, 3000}, 1600, 0), std::nullopt);
    EXPECT_EQ(scaled({4000, 3000}, -1.0F), std::nullopt);
}

TEST(TargetSizeTest, aPictureLargerThanAJpegCanHoldIsRefusedAndNamedSo)
{
    const QList<std::pair<QSize, float>> tooLarge{{{40000, 30000}, 2.0F},
                                                  {{32760, 100}, 2.0F},   // 65520
                                                  {{20000, 15000}, 2.0F}, // 1.2 gigapixels
                                                  {{4000, 3000}, 1e30F}};
    for (const auto& [pixels, factor] : tooLarge) {
        EXPECT_EQ(scaled(pixels, factor), std::nullopt) << factor;
        EXPECT_TRUE(isTargetTooLarge(pixels, OutputSize{.scaleFactor = factor})) << factor;
    }
    EXPECT_EQ(scaled({32750, 100}, 2.0F), QSize(65500, 200));
}

TEST(TargetSizeTest, onlyWhatHasPixelsIsTooLarge)
{
    EXPECT_FALSE(isTargetTooLarge({4000, 3000}, OutputSize{.scaleFactor = 0.0F}));
    EXPECT_FALSE(isTargetTooLarge({4000, 3000}, OutputSize{.scaleFactor = 2.0F}));
    EXPECT_FALSE(isTargetTooLarge({40000, 30000}, OutputSize{}));
}

TEST(OutputSizeTest, itReadsTheControllersSettings)
{
    FakeDelegate delegate;
    delegate.scale = 0.25F;
    delegate.fixed = true;
    delegate.longSide = u"1600"_s;
    delegate.shortSide = QVariant();
    delegate.longIsLocked = false;
    delegate.shortIsLocked = true;
    const OutputSize size = OutputSize::of(delegate);
    EXPECT_EQ(size.scaleFactor, 0.25F);
    EXPECT_TRUE(size.fixedSize);
    EXPECT_EQ(size.longSize, 1600);
    EXPECT_EQ(size.shortSize, 0);
    EXPECT_FALSE(size.longLocked);
    EXPECT_TRUE(size.shortLocked);
}

} // namespace
