#include "BayerRenderer.h"

#include "BayerSamples.h"
#include "BitmapImage.h"
#include "ImageBuilder.h"
#include "QtPrinters.h"
#include "ReducedPicture.h"
#include "RenditionSamples.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numbers>

namespace
{

constexpr ToneCurve::Slopes kStraight{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};

bool isSame(const Bitmap& one, const Bitmap& other)
{
    bool same = one.size() == other.size() && one.transfer() == other.transfer();
    for (int y = 0; same && y < one.pixelsHigh(); ++y) {
        same = std::ranges::equal(one.row(y), other.row(y));
    }
    return same;
}

Bitmap leaves(QSize size)
{
    return SrgbTransfer::converted(SceneSamples::leaves(size), Transfer::Linear);
}

/// What a pixel's light is, -1..1.
using Shade = std::function<double(double x, double y)>;

constexpr int kShaded = 120;

/// A grey picture of that.
Bitmap shaded(const Shade& shade)
{
    Bitmap picture(kShaded, kShaded, Transfer::Linear);
    for (int y = 0; y < kShaded; ++y) {
        for (int x = 0; x < kShaded; ++x) {
            const double light = 0.4 + 0.3 * shade(x, y);
            std::fill_n(&picture.row(y)[3 * static_cast<std::size_t>(x)],
                        3,
                        static_cast<quint16>(std::lround(light * 65535.0)));
        }
    }
    return picture;
}

/// From dark to light, across a line of that direction.
Shade edge(double degrees)
{
    const double angle = degrees * std::numbers::pi / 180.0;
    return [across = std::cos(angle), down = std::sin(angle)](double x, double y) {
        return std::clamp(2.0 * ((x - 60.3) * across + (y - 59.6) * down), -1.0, 1.0);
    };
}

/// How far values lie from what they should be, 0..1 of all light.
struct Deviations {
    double largest{0.0};
    double mean{0.0};
};

/// Of what is made of the picture through a mosaic, without its rim.
Deviations deviationsOf(const Shade& shade)
{
    constexpr int kRim = 4;
    const Bitmap picture = shaded(shade);
    const BayerSamples sensor(picture, BayerSamples::kPhases[0]);
    const Bitmap linear = BayerRenderer(sensor.mosaic(), kIdentityMatrix).linear();
    Deviations found;
    double count = 0.0;
    for (int y = kRim; y < kShaded - kRim; ++y) {
        for (std::size_t i = std::size_t{3} * kRim; i < std::size_t{3} * (kShaded - kRim); ++i) {
            const double deviation = std::abs(linear.row(y)[i] - picture.row(y)[i]) / 65535.0;
            found.largest = std::max(found.largest, deviation);
            found.mean += deviation;
            count += 1.0;
        }
    }
    found.mean /= count;
    return found;
}

} // namespace

TEST(BayerRendererTest, aFlatSensorGivesOneColourInEveryPhase)
{
    const Bitmap flat = BayerSamples::flat({41, 29}, {9000, 20000, 30000});
    for (const BayerSamples::Phase phase : BayerSamples::kPhases) {
        const BayerSamples sensor(flat, phase);
        const Bitmap linear = BayerRenderer(sensor.mosaic(), kIdentityMatrix).linear();
        EXPECT_TRUE(isSame(linear, flat));
    }
}

TEST(BayerRendererTest, everyPhaseGivesThePictureThatTheSensorSaw)
{
    for (const QSize size : {QSize(160, 120), QSize(161, 120), QSize(160, 121), QSize(161, 121)}) {
        const Bitmap scene = ImageBuilder::scene(size, Transfer::Linear);
        for (const BayerSamples::Phase phase : BayerSamples::kPhases) {
            const BayerSamples sensor(scene, phase);
            const Bitmap linear = BayerRenderer(sensor.mosaic(), kIdentityMatrix).linear();
            EXPECT_EQ(linear.size(), size);
            EXPECT_LT(ImageBuilder::difference(linear, scene), 0.008);
        }
    }
}

TEST(BayerRendererTest, whatAFilterMeasuredIsWhatItsPixelHas)
{
    const Bitmap scene = leaves({64, 48});
    const BayerSamples sensor(scene, BayerSamples::kPhases[0]);
    const Bitmap linear = BayerRenderer(sensor.mosaic(), kIdentityMatrix).linear();
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            const int value = 3 * x + y % 2 + x % 2;
            const auto channel = static_cast<std::size_t>(value);
            EXPECT_EQ(linear.row(y)[channel], scene.row(y)[channel]);
        }
    }
}

TEST(BayerRendererTest, straightEdgesHaveNoZipper)
{
    for (const double degrees : {0.0, 90.0}) {
        EXPECT_LT(deviationsOf(edge(degrees)).largest, 0.001) << degrees;
    }
}

TEST(BayerRendererTest, slantedEdgesHaveHardlyAnyZipper)
{
    for (const double degrees : {5.0, 20.0, 70.0, 110.0, 160.0, 175.0}) {
        EXPECT_LT(deviationsOf(edge(degrees)).largest, 0.03) << degrees;
    }
    for (const double degrees : {45.0, 135.0}) {
        EXPECT_LT(deviationsOf(edge(degrees)).largest, 0.07) << degrees;
    }
}

TEST(BayerRendererTest, fineDiagonalsAreNoMaze)
{
    constexpr double kLinesAPixel = 0.2;
    for (const double sign : {1.0, -1.0}) {
        const Deviations found = deviationsOf([sign](double x, double y) {
            const double across = (x + sign * y) / std::numbers::sqrt2;
            return std::cos(2.0 * std::numbers::pi * kLinesAPixel * across);
        });
        EXPECT_LT(found.largest, 0.13) << sign;
        EXPECT_LT(found.mean, 0.02) << sign;
    }
}

TEST(BayerRendererTest, ringsOfAnyDirectionStayRings)
{
    // A zone plate: a quarter of a line a pixel at its rim.
    constexpr double kLinesAtRim = 0.25;
    const Deviations found = deviationsOf([](double x, double y) {
        const double middle = kShaded / 2.0;
        const double squares = (x - middle) * (x - middle) + (y - middle) * (y - middle);
        return std::cos(std::numbers::pi * kLinesAtRim * squares / middle);
    });
    EXPECT_LT(found.largest, 0.28);
    EXPECT_LT(found.mean, 0.012);
}

TEST(BayerRendererTest, blackAndGainOfEachFilterAreTakenOff)
{
    const Bitmap scene = leaves({80, 60});
    BayerSamples sensor(scene, BayerSamples::kPhases[0]);
    sensor.distort({100, 131, 90, 126}, {0.25F, 0.5F, 0.5F, 0.4F});
    const Bitmap linear = BayerRenderer(sensor.mosaic(), kIdentityMatrix).linear();
    const Bitmap plain =
        BayerRenderer(BayerSamples(scene, BayerSamples::kPhases[0]).mosaic(), kIdentityMatrix)
            .linear();
    EXPECT_LT(ImageBuilder::difference(linear, plain), 1e-3);
}

TEST(BayerRendererTest, clippedLightIsWhiteWhateverTheGains)
{
    const Bitmap bright = BayerSamples::flat({40, 40}, {60000, 60000, 60000});
    BayerSamples sensor(bright, BayerSamples::kPhases[0]);
    BayerMosaic mosaic = sensor.mosaic();
    mosaic.balance = {2.1F, 1.15F, 1.6F};
    const ColorMatrix camera{1.6, -0.5, -0.1, -0.2, 1.5, -0.3, 0.0, -0.5, 1.5};
    for (const float white : {65535.0F, 58000.0F}) {
        mosaic.white = white;
        const Bitmap linear = BayerRenderer(mosaic, camera).linear();
        const auto row = linear.row(20);
        EXPECT_NEAR(row[60], white, 20.0F);
        EXPECT_NEAR(row[61], row[60], 20);
        EXPECT_NEAR(row[62], row[60], 20);
    }
}

TEST(BayerRendererTest, gainsAreTakenBeforeLightIsClipped)
{
    const Bitmap flat = BayerSamples::flat({40, 40}, {40000, 20000, 10000});
    const BayerSamples sensor(flat, BayerSamples::kPhases[3]);
    BayerMosaic mosaic = sensor.mosaic();
    mosaic.balance = {2.0F, 1.0F, 3.0F};
    const BayerRenderer renderer(mosaic, kIdentityMatrix);
    EXPECT_TRUE(isSame(renderer.linear(), BayerSamples::flat({40, 40}, {65535, 20000, 30000})));
    EXPECT_TRUE(isSame(renderer.balanced({1.5, 1.0, 2.0}).linear(),
                       BayerSamples::flat({40, 40}, {60000, 20000, 20000})));
    // What is fitted must not be clipped already.
    EXPECT_TRUE(isSame(renderer.reduced(), BayerSamples::flat({20, 20}, {40000, 20000, 10000})));
}

TEST(BayerRendererTest, theSameBytesWithAnyNumberOfThreads)
{
    const Bitmap scene = leaves({321, 517});
    const BayerSamples sensor(scene, BayerSamples::kPhases[2]);
    BayerRenderer renderer(sensor.mosaic(), {1.2, -0.1, -0.1, -0.2, 1.4, -0.2, 0.0, -0.1, 1.1});
    const Rendition rendition = Rendition::neutral(0.3);
    renderer.setThreads(1);
    const QImage rendered = renderer.rendered(rendition);
    const Bitmap halved = renderer.halved();
    const Bitmap reduced = renderer.reduced();
    for (const int threads : {2, 3, 8}) {
        renderer.setThreads(threads);
        EXPECT_TRUE(renderer.rendered(rendition) == rendered) << threads;
        EXPECT_TRUE(isSame(renderer.halved(), halved)) << threads;
        EXPECT_TRUE(isSame(renderer.reduced(), reduced)) << threads;
    }
}

TEST(BayerRendererTest, partsAndRowsAreThoseOfTheWhole)
{
    const Bitmap scene = leaves({120, 90});
    const BayerSamples sensor(scene, BayerSamples::kPhases[0]);
    BayerMosaic mosaic = sensor.mosaic();
    const Bitmap whole = BayerRenderer(mosaic, kIdentityMatrix).linear();
    for (const QRect part : {QRect(11, 8, 50, 41), QRect(10, 7, 51, 40), QRect(0, 1, 119, 89)}) {
        mosaic.kept = part;
        const BayerRenderer renderer(mosaic, kIdentityMatrix);
        const Bitmap cut = renderer.linear();
        ASSERT_EQ(cut.size(), part.size());
        for (int y = 0; y < part.height(); ++y) {
            EXPECT_TRUE(std::ranges::equal(
                cut.row(y),
                whole.row(part.top() + y)
                    .subspan(static_cast<std::size_t>(3 * part.left()), cut.row(y).size())));
        }
        const Bitmap rows = renderer.linearRows(20, 30);
        EXPECT_TRUE(std::ranges::equal(rows.row(3), cut.row(23)));
    }
}

TEST(BayerRendererTest, theRenditionIsAppliedToLight)
{
    const Bitmap scene = ImageBuilder::scene({160, 120}, Transfer::Linear);
    const BayerSamples sensor(scene, BayerSamples::kPhases[0]);
    const BayerRenderer renderer(sensor.mosaic(), kIdentityMatrix);
    const ColorMatrix matrix{1.1, -0.1, 0.0, -0.1, 1.2, -0.1, 0.1, -0.2, 1.1};
    const Rendition rendition(matrix, 0.3, ToneCurve({0.6, 1.4, 1.5, 1.1, 0.7, 0.5}));
    // Here and there light that was rounded in between makes the next level.
    EXPECT_LT(
        ImageBuilder::difference(BitmapImage::fromImage(renderer.rendered(rendition)),
                                 BitmapImage::fromImage(BitmapImage::toImage(
                                     RenditionSamples::applied(rendition, renderer.linear())))),
        1e-4);
    EXPECT_TRUE(renderer.rendered(Rendition(kIdentityMatrix, 0.0, ToneCurve(kStraight))) ==
                BitmapImage::toImage(renderer.linear()));
}

TEST(BayerRendererTest, cellsMakeThePictureOfHalfTheSize)
{
    for (const QSize size : {QSize(200, 160), QSize(201, 161)}) {
        const Bitmap scene = ImageBuilder::scene(size, Transfer::Linear);
        for (const BayerSamples::Phase phase : BayerSamples::kPhases) {
            const BayerSamples sensor(scene, phase);
            const Bitmap half = BayerRenderer(sensor.mosaic(), kIdentityMatrix).halved();
            EXPECT_EQ(half.size(), size / 2);
            const Bitmap wanted = ImageBuilder::scene(size / 2, Transfer::Linear);
            EXPECT_LT(ImageBuilder::difference(half, wanted), 0.02);
        }
    }
}

TEST(BayerRendererTest, theReducedPictureIsTheMeanOfTheCells)
{
    const Bitmap scene = leaves({1300, 900});
    const BayerSamples sensor(scene, BayerSamples::kPhases[1]);
    const BayerRenderer renderer(sensor.mosaic(), kIdentityMatrix);
    const Bitmap wanted = ReducedPicture::of(renderer.halved());
    EXPECT_EQ(renderer.reduced().size(), wanted.size());
    EXPECT_LT(ImageBuilder::difference(renderer.reduced(), wanted), 1e-4);
}

TEST(BayerRendererTest, columnsAndRowsThatFillNoBlockAreLeftOut)
{
    const QSize cells(7 * ReducedPicture::kLongestSide + 6, 7 * 20 + 6);
    const BayerSamples sensor(BayerSamples::flat(2 * cells, {9000, 20000, 30000}),
                              BayerSamples::kPhases[0]);
    const Bitmap reduced = BayerRenderer(sensor.mosaic(), kIdentityMatrix).reduced();
    EXPECT_EQ(reduced.size(), QSize(ReducedPicture::kLongestSide, 20));
}
