#include "ColorSamples.h"

#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "ReducedPicture.h"

#include <QTransform>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{

constexpr QSize kSampledSize(240, 180);

double worstOf(const std::vector<ColorSample>& samples)
{
    double worst = 0.0;
    for (const ColorSample& sample : samples) {
        // Where there are no edges, which no two pictures have alike.
        if (sample.weight < 0.9F) {
            continue;
        }
        const CieLab own = CieLab::of(sample.light);
        worst = std::max({worst,
                          std::abs(static_cast<double>(own.lightness - sample.shown.lightness)),
                          std::abs(static_cast<double>(own.redGreen - sample.shown.redGreen)),
                          std::abs(static_cast<double>(own.yellowBlue - sample.shown.yellowBlue))});
    }
    return worst;
}

} // namespace

TEST(ColorSamplesTest, aTurnedPictureIsMetAtTheSamePlaces)
{
    const Bitmap photo = ImageBuilder::scene(kSampledSize, Transfer::Linear);
    const QImage upright = BitmapImage::toImage(ImageBuilder::scene(kSampledSize));
    for (int turns = 0; turns < 4; ++turns) {
        // Turned so many quarters clockwise it lies as the photo does.
        const QImage turned = upright.transformed(QTransform().rotate(-90.0 * turns));
        const auto samples =
            ColorSamples::of(photo,
                             ReducedPicture::of(turned),
                             {.turns = turns, .first = {0, 0, 1, 1}, .second = {0, 0, 1, 1}});
        EXPECT_GT(samples.size(), 1000U);
        EXPECT_LT(worstOf(samples), 2.0) << turns;
    }
}

TEST(ColorSamplesTest, onlyThePartThatBothShowIsCompared)
{
    const Bitmap photo = ImageBuilder::scene(kSampledSize, Transfer::Linear);
    const QImage right =
        BitmapImage::toImage(ImageBuilder::scene(kSampledSize)).copy(120, 0, 120, 180);
    const Bitmap shown = ReducedPicture::of(right);
    EXPECT_LT(worstOf(ColorSamples::of(
                  photo, shown, {.turns = 0, .first = {0.5, 0, 0.5, 1}, .second = {0, 0, 1, 1}})),
              2.0);
    EXPECT_GT(worstOf(ColorSamples::of(photo, shown, {})), 10.0);
}

TEST(ColorSamplesTest, placesClippedInSomeChannelsAreLeftOut)
{
    Bitmap photo = ImageBuilder::flat(kSampledSize, 20000, Transfer::Linear);
    for (int y = 0; y < photo.pixelsHigh(); ++y) {
        const auto row = photo.row(y);
        for (std::size_t i = 0; i < row.size() / 2; i += 3) {
            row[i + 1] = 65535;
        }
    }
    const auto samples = ColorSamples::of(photo, photo, {});
    EXPECT_FALSE(samples.empty());
    EXPECT_TRUE(std::ranges::all_of(
        samples, [](const ColorSample& sample) { return sample.light[1] < 0.9F; }));
    EXPECT_TRUE(std::ranges::none_of(samples, &ColorSample::isFull));
    // All clipped is white, which is a colour.
    const Bitmap white = ImageBuilder::flat(kSampledSize, 65535, Transfer::Linear);
    const auto full = ColorSamples::of(white, white, {});
    EXPECT_GT(full.size(), samples.size());
    EXPECT_TRUE(std::ranges::all_of(full, &ColorSample::isFull));
}

TEST(ColorSamplesTest, edgesWeighLessThanAreas)
{
    const Bitmap photo = ImageBuilder::scene(kSampledSize, Transfer::Linear);
    const auto samples = ColorSamples::of(photo, photo, {});
    const auto [least, most] = std::ranges::minmax(samples, {}, &ColorSample::weight);
    EXPECT_LT(least.weight, 0.5F);
    EXPECT_GT(most.weight, 0.95F);
}
