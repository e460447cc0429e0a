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
                             {.turns = turns, .first = {0, 0, 1, 1}, .second = {0, 0, 1, 1}})
                .samples;
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
    EXPECT_LT(
        worstOf(ColorSamples::of(
                    photo, shown, {.turns = 0, .first = {0.5, 0, 0.5, 1}, .second = {0, 0, 1, 1}})
                    .samples),
        2.0);
    EXPECT_GT(worstOf(ColorSamples::of(photo, shown, {}).samples), 10.0);
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
    const auto found = ColorSamples::of(photo, photo, {});
    EXPECT_FALSE(found.samples.empty());
    EXPECT_TRUE(std::ranges::all_of(
        found.samples, [](const ColorSample& sample) { return sample.light[1] < 0.9F; }));
    EXPECT_FALSE(found.fullLight.has_value());
    // All clipped is white, which is a colour.
    const Bitmap white = ImageBuilder::flat(kSampledSize, 65535, Transfer::Linear);
    const auto full = ColorSamples::of(white, white, {});
    EXPECT_GT(full.samples.size(), found.samples.size());
    EXPECT_NEAR(full.fullLight.value_or(0.0F), 100.0F, 0.1F);
}

TEST(ColorSamplesTest, lightIsFullWhereTheSensorClipsEachChannel)
{
    const Bitmap white = ImageBuilder::flat(kSampledSize, 65535, Transfer::Linear);
    const Bitmap light = ImageBuilder::flat(kSampledSize, 40000, Transfer::Linear);
    const auto isFull = [&](const ColorClipping& clipping) {
        return ColorSamples::of(light, white, {}, clipping).fullLight.has_value();
    };
    EXPECT_TRUE(isFull({.balance = {1.7, 1.0, 1.4}, .white = 40000.0 / 65535.0}));
    EXPECT_TRUE(isFull({.balance = {1.7, 1.7, 1.7}, .white = 1.0}));
    EXPECT_FALSE(isFull({.balance = {1.7, 1.0, 1.4}, .white = 1.0}));
    EXPECT_FALSE(isFull({}));
}

TEST(ColorSamplesTest, fullLightIsAsLightAsThePictureShowsItALittleWayOff)
{
    Bitmap photo = ImageBuilder::flat(kSampledSize, 3000, Transfer::Linear);
    const auto withLamp = [](Bitmap bitmap, int left) {
        for (int y = 88; y < 96; ++y) {
            std::ranges::fill(bitmap.row(y).subspan(3 * static_cast<std::size_t>(left), 24), 65535);
        }
        return bitmap;
    };
    const auto lightness = [&](int shift) {
        return ColorSamples::of(withLamp(photo, 116), withLamp(photo, 116 + shift), {})
            .fullLight.value_or(0.0F);
    };
    EXPECT_NEAR(lightness(0), 100.0F, 0.1F);
    EXPECT_NEAR(lightness(4), 100.0F, 0.1F);
    EXPECT_LT(lightness(40), 50.0F);
}

TEST(ColorSamplesTest, edgesWeighLessThanAreas)
{
    const Bitmap photo = ImageBuilder::scene(kSampledSize, Transfer::Linear);
    const auto samples = ColorSamples::of(photo, photo, {}).samples;
    const auto [least, most] = std::ranges::minmax(samples, {}, &ColorSample::weight);
    EXPECT_LT(least.weight, 0.5F);
    EXPECT_GT(most.weight, 0.95F);
}
