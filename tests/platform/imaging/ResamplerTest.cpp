#include "Resampler.h"

#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace
{

double meanOf(const Bitmap& bitmap)
{
    double sum = 0.0;
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (const quint16 value : bitmap.row(y)) {
            sum += value;
        }
    }
    return sum / (3.0 * bitmap.pixelsWide() * bitmap.pixelsHigh());
}

constexpr quint16 kLight = 50000;
constexpr quint16 kDark = 10000;

/// A frame of that many pixels around another light.
Bitmap framed(QSize size, int frame, quint16 outside, quint16 inside)
{
    Bitmap bitmap = ImageBuilder::flat(size, outside, Transfer::Linear);
    const std::ptrdiff_t edge = 3 * std::ptrdiff_t{frame};
    for (int y = frame; y < size.height() - frame; ++y) {
        const auto row = bitmap.row(y);
        std::fill(row.begin() + edge, row.end() - edge, inside);
    }
    return bitmap;
}

/// How far Lanczos' filter of three lobes, sin(x) / x windowed by the same three times as wide,
/// goes beyond a step between two pixels, in parts of it, wherever between them it is taken.
double overshootOfLanczos()
{
    const auto sinc = [](double x) { return x == 0.0 ? 1.0 : std::sin(M_PI * x) / (M_PI * x); };
    double highest = 0.0;
    for (int hundredth = 0; hundredth < 100; ++hundredth) {
        const double place = hundredth / 100.0;
        double sum = 0.0;
        double highestSum = 0.0;
        for (int pixel = -3; pixel < 3; ++pixel) {
            const double x = pixel + place;
            sum += sinc(x) * sinc(x / 3.0);
            highestSum = std::max(highestSum, sum);
        }
        highest = std::max(highest, highestSum / sum - 1.0);
    }
    return highest;
}

/// The least and the greatest value of the rows [from, end).
std::pair<int, int> rangeOf(const Bitmap& bitmap, int from, int end)
{
    std::pair<int, int> range{65535, 0};
    for (int y = from; y < end; ++y) {
        const auto [least, greatest] = std::ranges::minmax(bitmap.row(y));
        range = {std::min<int>(range.first, least), std::max<int>(range.second, greatest)};
    }
    return range;
}

const std::array kSizes{QSize(100, 67), QSize(150, 100), QSize(299, 199), QSize(450, 300)};

} // namespace

TEST(ResamplerTest, aFrameStaysUniformToTheEdgeOfThePicture)
{
    constexpr int kFrame = 36;
    for (const quint16 outside : {quint16{0}, kDark, kLight, quint16{65535}}) {
        const Bitmap picture = framed({300, 200}, kFrame, outside, kDark + 20000);
        for (const QSize size : kSizes) {
            const auto scaled = Resampler::scale(picture, size);
            ASSERT_TRUE(scaled.ok());
            // The filter reaches three pixels of the smaller of both pictures.
            const int reach = size.width() < 300 ? 4 : 4 * size.width() / 300;
            const int uniform = kFrame * size.height() / 200 - reach;
            ASSERT_GT(uniform, 1);
            const auto upper = rangeOf(scaled.value(), 0, uniform);
            const auto lower = rangeOf(scaled.value(), size.height() - uniform, size.height());
            EXPECT_NEAR(upper.first, outside, 2) << size.width();
            EXPECT_NEAR(upper.second, outside, 2) << size.width();
            EXPECT_NEAR(lower.first, outside, 2) << size.width();
            EXPECT_NEAR(lower.second, outside, 2) << size.width();
            for (int y = 0; y < size.height(); ++y) {
                EXPECT_NEAR(scaled.value().row(y).front(), outside, 2);
                EXPECT_NEAR(scaled.value().row(y).back(), outside, 2);
            }
        }
    }
}

TEST(ResamplerTest, aSharpEdgeOvershootsByNoMoreThanItsFilterDoes)
{
    const double bound = overshootOfLanczos() * (kLight - kDark) + 2.0;
    Bitmap picture = ImageBuilder::flat({300, 200}, kDark, Transfer::Linear);
    for (int y = 0; y < 200; ++y) {
        const auto row = picture.row(y);
        std::fill(row.begin() + 450, row.end(), kLight);
    }
    for (const QSize size : kSizes) {
        const auto scaled = Resampler::scale(picture, size);
        ASSERT_TRUE(scaled.ok());
        const auto [least, greatest] = rangeOf(scaled.value(), 0, size.height());
        EXPECT_GE(least, kDark - bound) << size.width();
        EXPECT_LE(greatest, kLight + bound) << size.width();
        // Lanczos it is, not a filter that smears.
        EXPECT_GT(greatest, kLight + 400) << size.width();
    }
}

TEST(ResamplerTest, lightBeyondBlackAndWhiteIsCutOffWithoutARim)
{
    for (const QSize size : kSizes) {
        const auto scaled = Resampler::scale(framed({300, 200}, 60, 65535, 0), size);
        ASSERT_TRUE(scaled.ok());
        // Across the middle: white, one fall, black, one rise, white; ripples of the filter are a
        // part of the step.
        const auto row = scaled.value().row(size.height() / 2);
        const int slack = static_cast<int>(overshootOfLanczos() * 65535.0);
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::size_t pixel = i / 3;
            const double place = (static_cast<double>(pixel) + 0.5) / size.width() * 300.0;
            const double reach = 2.0 * std::max(1.0, 300.0 / size.width());
            if (std::abs(place - 60.0) > reach && std::abs(place - 240.0) > reach) {
                const bool isWhite = place < 60.0 || place > 240.0;
                EXPECT_NEAR(row[i], isWhite ? 65535 : 0, slack) << size.width() << ' ' << place;
            }
        }
    }
}

TEST(ResamplerTest, resultHasTheAskedSizeAndLinearValues)
{
    const Bitmap scene = ImageBuilder::scene({301, 199});
    for (const QSize size : {QSize(150, 99), QSize(1, 1), QSize(37, 400), QSize(602, 398)}) {
        const auto scaled = Resampler::scale(scene, size);
        ASSERT_TRUE(scaled.ok());
        EXPECT_EQ(scaled.value().size(), size);
        EXPECT_EQ(scaled.value().transfer(), Transfer::Linear);
    }
}

TEST(ResamplerTest, sameSizeChangesNoPixel)
{
    const Bitmap scene = ImageBuilder::scene({64, 48}, Transfer::Linear);
    const auto scaled = Resampler::scale(scene, {64, 48});
    ASSERT_TRUE(scaled.ok());
    EXPECT_EQ(ImageBuilder::difference(scaled.value(), scene), 0.0);
}

TEST(ResamplerTest, sceneStaysTheSceneWhenScaled)
{
    const auto scaled = Resampler::scale(ImageBuilder::scene({800, 600}), {200, 150});
    ASSERT_TRUE(scaled.ok());
    EXPECT_LT(ImageBuilder::difference(scaled.value(), ImageBuilder::scene({200, 150})), 0.01);
}

TEST(ResamplerTest, averagingHappensInLight)
{
    // Fine black and white stripes give half the light, which sRGB encodes as 188 of 255.
    Bitmap stripes(256, 256, Transfer::Srgb);
    for (int y = 0; y < 256; ++y) {
        std::ranges::fill(stripes.row(y), y % 2 == 0 ? quint16{0} : quint16{65535});
    }
    const auto scaled = Resampler::scale(stripes, {64, 64});
    ASSERT_TRUE(scaled.ok());
    const Bitmap result = SrgbTransfer::converted(scaled.value(), Transfer::Srgb);
    EXPECT_NEAR(meanOf(result) / 257.0, 188.0, 2.0);
}

TEST(ResamplerTest, flatPictureKeepsItsValueToTheLastBits)
{
    const auto scaled =
        Resampler::scale(ImageBuilder::flat({333, 222}, 12345, Transfer::Linear), {100, 67});
    ASSERT_TRUE(scaled.ok());
    for (int y = 0; y < 67; ++y) {
        for (const quint16 value : scaled.value().row(y)) {
            ASSERT_NEAR(value, 12345, 2);
        }
    }
}

TEST(ResamplerTest, channelsStayInPlace)
{
    Bitmap red(90, 60, Transfer::Linear);
    for (int y = 0; y < 60; ++y) {
        const auto row = red.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = 60000;
            row[i + 1] = 30000;
        }
    }
    const auto scaled = Resampler::scale(red, {45, 30});
    ASSERT_TRUE(scaled.ok());
    EXPECT_NEAR(scaled.value().row(15)[30], 60000, 4);
    EXPECT_NEAR(scaled.value().row(15)[31], 30000, 4);
    EXPECT_NEAR(scaled.value().row(15)[32], 0, 4);
}

TEST(ResamplerTest, emptySizesAreErrors)
{
    EXPECT_FALSE(Resampler::scale(ImageBuilder::scene({10, 10}), {0, 5}).ok());
    EXPECT_FALSE(Resampler::scale(Bitmap(), {5, 5}).ok());
}
