#include "RenditionFit.h"

#include "BitmapImage.h"
#include "CieLab.h"
#include "ImageBuilder.h"
#include "ReducedPicture.h"
#include "RenditionSamples.h"
#include "SceneSamples.h"
#include "SrgbTransfer.h"

#include <QTransform>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{

constexpr QSize kFittedSize(320, 240);

constexpr ToneCurve::Slopes kFittedCurve{0.4, 1.2, 1.6, 1.3, 0.8, 0.5};

/// A photo's light, two stops below what the sensor holds.
Bitmap photo()
{
    Bitmap bitmap = SrgbTransfer::converted(SceneSamples::leaves(kFittedSize), Transfer::Linear);
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
        for (quint16& value : bitmap.row(y)) {
            value /= 4;
        }
    }
    return bitmap;
}

QImage shownBy(const Rendition& rendition, const Bitmap& light)
{
    return BitmapImage::toImage(RenditionSamples::applied(rendition, light));
}

bool isSame(const Rendition& one, const Rendition& other)
{
    bool same = one.matrix() == other.matrix();
    for (int light = 0; same && light < 65536; ++light) {
        same = one.tone(static_cast<quint16>(light)) == other.tone(static_cast<quint16>(light));
    }
    return same;
}

/// Mean distance of colours (CIE 1976).
double distance(const Bitmap& one, const Bitmap& other)
{
    const auto labAt = [](const Bitmap& bitmap, int y, std::size_t i) {
        std::array<float, 3> light{};
        for (std::size_t channel = 0; channel < 3; ++channel) {
            light.at(channel) =
                static_cast<float>(SrgbTransfer::tables().linear(bitmap.row(y)[i + channel])) /
                65535.0F;
        }
        return CieLab::of(light);
    };
    double sum = 0.0;
    for (int y = 0; y < one.pixelsHigh(); ++y) {
        for (std::size_t i = 0; i < one.row(y).size(); i += 3) {
            const CieLab a = labAt(one, y, i);
            const CieLab b = labAt(other, y, i);
            sum += std::hypot(static_cast<double>(a.lightness - b.lightness),
                              static_cast<double>(a.redGreen - b.redGreen),
                              static_cast<double>(a.yellowBlue - b.yellowBlue));
        }
    }
    return sum / one.pixelsWide() / one.pixelsHigh();
}

/// How far the fit to a picture, made by a rendition of the photo, stays from that rendition.
double distanceLeft(const Rendition& made, const SensorColors& colors = {})
{
    const Bitmap light = photo();
    const Rendition found = RenditionFit::of(light, colors, {shownBy(made, light)});
    return distance(RenditionSamples::applied(found, light),
                    RenditionSamples::applied(made, light));
}

} // namespace

TEST(RenditionFitTest, exposureAndCurveAreFound)
{
    for (const double stops : {-1.0, 0.5, 2.0, 3.0}) {
        EXPECT_LT(distanceLeft(Rendition(kIdentityMatrix, stops, ToneCurve(kFittedCurve))), 1.0)
            << stops;
    }
}

TEST(RenditionFitTest, fullLightIsAsWhiteAsTheFewPlacesShowItThatAreBlown)
{
    const QRect lamp(40, 30, 8, 6);
    Bitmap light = photo();
    for (int y = lamp.top(); y <= lamp.bottom(); ++y) {
        std::fill_n(
            light.row(y).begin() + 3 * std::ptrdiff_t{lamp.left()}, 3 * lamp.width(), 65535);
    }
    // What else the photo holds says that full light is a light grey.
    constexpr ToneCurve::Slopes kShoulder{0.4, 1.6, 1.4, 0.9, 0.5, 0.4};
    QImage shown = shownBy(Rendition(kIdentityMatrix, 1.0, ToneCurve(kShoulder)), light);
    const QPoint middle = lamp.center();
    ASSERT_LT(qGray(shown.pixel(middle)), 235);
    for (int y = lamp.top(); y <= lamp.bottom(); ++y) {
        for (int x = lamp.left(); x <= lamp.right(); ++x) {
            shown.setPixel(x, y, qRgb(255, 255, 255));
        }
    }
    const Rendition rendition = RenditionFit::of(light, {}, {shown});
    EXPECT_GT(rendition.tone(65535) / 257, 249);
}

TEST(RenditionFitTest, gainsAreFoundInTheColoursOfTheSensor)
{
    const SensorColors colors{.toSrgb = {1.6, -0.5, -0.1, -0.2, 1.5, -0.3, 0.0, -0.5, 1.5},
                              .stops = 0.0};
    const ColorMatrix gains{1.5, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.7};
    const ColorMatrix matrix =
        multiplied(colors.toSrgb, multiplied(gains, inverted(colors.toSrgb)));
    EXPECT_LT(distanceLeft(Rendition(matrix, 2.0, ToneCurve(kFittedCurve)), colors), 1.2);
}

TEST(RenditionFitTest, theGainsOfASensorReplaceTheCameras)
{
    // The camera would double red, which would clip it; in truth it needs a fifth more.
    const Bitmap grey =
        SrgbTransfer::converted(SceneSamples::leaves(kFittedSize), Transfer::Linear);
    Bitmap light = grey;
    for (int y = 0; y < light.pixelsHigh(); ++y) {
        const auto row = light.row(y);
        for (std::size_t i = 0; i < row.size(); i += 3) {
            row[i] = static_cast<quint16>(row[i] * 5 / 6);
        }
    }
    const SensorColors colors{.sensor =
                                  SensorColors::Sensor{.balance = {2.0, 1.0, 1.0}, .white = 1.0}};
    const Rendition made(kIdentityMatrix, 0.5, ToneCurve(kFittedCurve));
    const Rendition found = RenditionFit::of(light, colors, {shownBy(made, grey)});
    ASSERT_TRUE(found.balance().has_value());
    EXPECT_NEAR((*found.balance())[0] / (*found.balance())[1], 1.2, 0.06);
    EXPECT_NEAR((*found.balance())[2] / (*found.balance())[1], 1.0, 0.06);
    EXPECT_LT(
        distance(RenditionSamples::applied(found, grey), RenditionSamples::applied(made, grey)),
        1.5);
}

TEST(RenditionFitTest, saturationIsFound)
{
    const ColorMatrix paler{0.7637, 0.2146, 0.0217, 0.0638, 0.9146, 0.0217, 0.0638, 0.2146, 0.7217};
    EXPECT_LT(distanceLeft(Rendition(paler, 2.0, ToneCurve(kFittedCurve))), 1.0);
}

TEST(RenditionFitTest, gainsAndSaturationStayWithinBounds)
{
    // Blue eight times as strong is no white balance.
    const ColorMatrix blue{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 8.0};
    const Bitmap light = photo();
    const Rendition found = RenditionFit::of(
        light, {}, {shownBy(Rendition(blue, 1.0, ToneCurve(kFittedCurve)), light)});
    EXPECT_LT(found.matrix()[8] / found.matrix()[4], 2.5 * 1.6);
}

TEST(RenditionFitTest, partsThatShowSomethingElseAreNotFollowed)
{
    const Bitmap light = photo();
    const Rendition made(kIdentityMatrix, 2.0, ToneCurve(kFittedCurve));
    QImage stamped = shownBy(made, light);
    for (int y = 10; y < 60; ++y) {
        for (int x = 10; x < 110; ++x) {
            stamped.setPixelColor(x, y, Qt::magenta);
        }
    }
    const Rendition found = RenditionFit::of(light, {}, {stamped});
    EXPECT_LT(
        distance(RenditionSamples::applied(found, light), RenditionSamples::applied(made, light)),
        1.5);
}

TEST(RenditionFitTest, turnedCroppedAndSmallPreviewsAreFollowed)
{
    const Bitmap light = photo();
    const Rendition made(kIdentityMatrix, 2.0, ToneCurve(kFittedCurve));
    const QImage shown = shownBy(made, light);
    for (const QImage& reference :
         {shown.transformed(QTransform().rotate(90)),
          shown.transformed(QTransform().rotate(180)),
          shown.copy(0, 30, 320, 180),
          shown.scaled(96, 72, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)}) {
        const Rendition found = RenditionFit::of(light, {}, {reference});
        EXPECT_LT(distance(RenditionSamples::applied(found, light),
                           RenditionSamples::applied(made, light)),
                  3.0)
            << reference.width();
    }
}

TEST(RenditionFitTest, whatDoesNotShowTheSceneInColourGivesTheNeutralRendition)
{
    const Bitmap light = photo();
    const QImage shown = shownBy(Rendition::neutral(), light);
    const QList<QImage> useless{QImage(),
                                BitmapImage::toImage(ImageBuilder::flat(kFittedSize, 30000)),
                                BitmapImage::toImage(ImageBuilder::noise(kFittedSize)),
                                BitmapImage::toImage(SceneSamples::leaves(kFittedSize, 2)),
                                shown.convertToFormat(QImage::Format_Grayscale8),
                                shown.scaled(16, 12)};
    EXPECT_TRUE(isSame(RenditionFit::of(light, {}, {}), Rendition::neutral()));
    EXPECT_TRUE(isSame(RenditionFit::of(light, {}, useless), Rendition::neutral()));
    for (const QImage& reference : useless) {
        EXPECT_TRUE(isSame(RenditionFit::of(light, {}, {reference}), Rendition::neutral()));
    }
}

TEST(RenditionFitTest, theNeutralRenditionDependsOnTheCameraNotOnThePhoto)
{
    const SensorColors colors{.toSrgb = kIdentityMatrix, .stops = 0.35};
    EXPECT_TRUE(isSame(RenditionFit::of(photo(), colors, {}), Rendition::neutral(0.35)));
    const Bitmap dark = ImageBuilder::night(kFittedSize, 20);
    EXPECT_TRUE(isSame(RenditionFit::of(dark, colors, {}), Rendition::neutral(0.35)));
}

TEST(RenditionFitTest, coloursThatNoRenditionBringsNearAreNotFollowed)
{
    const Bitmap light =
        SrgbTransfer::converted(ImageBuilder::scene(kFittedSize), Transfer::Linear);
    const QImage exchanged = shownBy(Rendition::neutral(), light).rgbSwapped();
    EXPECT_TRUE(isSame(RenditionFit::of(light, {}, {exchanged}), Rendition::neutral()));
}

TEST(RenditionFitTest, theFirstPictureOfTheSceneIsFollowed)
{
    const Bitmap light = photo();
    const QImage large = shownBy(Rendition(kIdentityMatrix, 2.5, ToneCurve(kFittedCurve)), light);
    const QImage small = shownBy(Rendition(kIdentityMatrix, 1.0, ToneCurve(kFittedCurve)), light)
                             .scaled(160, 120, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const QImage foreign = BitmapImage::toImage(SceneSamples::leaves(kFittedSize * 2, 2));
    const Rendition alone = RenditionFit::of(light, {}, {large});
    EXPECT_TRUE(isSame(RenditionFit::of(light, {}, {foreign, large, small}), alone));
    EXPECT_FALSE(isSame(RenditionFit::of(light, {}, {small}), alone));
}
