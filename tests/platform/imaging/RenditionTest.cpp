#include "Rendition.h"

#include "ImageBuilder.h"
#include "RenditionSamples.h"
#include "SrgbTransfer.h"

#include <gtest/gtest.h>

namespace
{

constexpr ToneCurve::Slopes kStraightCurve{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};

Bitmap pixelOf(quint16 red, quint16 green, quint16 blue)
{
    Bitmap bitmap(1, 1, Transfer::Linear);
    bitmap.row(0)[0] = red;
    bitmap.row(0)[1] = green;
    bitmap.row(0)[2] = blue;
    return bitmap;
}

} // namespace

TEST(RenditionTest, withoutAnyChangeItIsTheTransferOfSrgb)
{
    const Rendition rendition(kIdentityMatrix, 0.0, ToneCurve(kStraightCurve));
    for (int light = 0; light < 65536; light += 5) {
        const auto value = static_cast<quint16>(light);
        EXPECT_NEAR(rendition.tone(value), SrgbTransfer::tables().encoded(value), 1);
    }
    const Bitmap scene = ImageBuilder::scene({40, 30}, Transfer::Linear);
    const Bitmap picture = RenditionSamples::applied(rendition, scene);
    EXPECT_EQ(picture.transfer(), Transfer::Srgb);
    EXPECT_LT(ImageBuilder::difference(picture, scene), 1e-4);
}

TEST(RenditionTest, stopsDoubleTheLight)
{
    const Rendition rendition(kIdentityMatrix, 1.0, ToneCurve(kStraightCurve));
    for (const quint16 light : {quint16{50}, quint16{1000}, quint16{20000}}) {
        EXPECT_NEAR(rendition.tone(light),
                    SrgbTransfer::tables().encoded(static_cast<quint16>(2 * light)),
                    1);
    }
    EXPECT_EQ(rendition.tone(40000), 65535);
}

TEST(RenditionTest, darkLightOfMuchExposureIsNotCoarse)
{
    const Rendition rendition(kIdentityMatrix, -3.0, ToneCurve(kStraightCurve));
    // An eighth of 12 is between two values of light; so is its tone.
    EXPECT_GT(rendition.tone(12), rendition.tone(8));
    EXPECT_LT(rendition.tone(12), rendition.tone(16));
}

TEST(RenditionTest, theNeutralOneKeepsGreyGreyAndLighterLighter)
{
    const Rendition neutral = Rendition::neutral();
    EXPECT_EQ(neutral.matrix(), kIdentityMatrix);
    EXPECT_EQ(neutral.tone(0), 0);
    EXPECT_EQ(neutral.tone(65535), 65535);
    for (int light = 1; light < 65536; ++light) {
        EXPECT_GE(neutral.tone(static_cast<quint16>(light)),
                  neutral.tone(static_cast<quint16>(light - 1)));
    }
    EXPECT_GT(Rendition::neutral(0.5).tone(5000), neutral.tone(5000));
}

TEST(RenditionTest, clippedLightStaysWhiteWhateverTheGains)
{
    for (const ColorMatrix& gains : {ColorMatrix{0.5, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.7},
                                     ColorMatrix{1.8, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 2.0},
                                     ColorMatrix{1.3, -0.2, 0.1, 0.0, 0.8, -0.2, 0.1, 0.1, 0.4}}) {
        const Rendition rendition(gains, 0.0, ToneCurve(kStraightCurve));
        const Bitmap white = RenditionSamples::applied(rendition, pixelOf(65535, 65535, 65535));
        EXPECT_EQ(white.row(0)[0], white.row(0)[1]);
        EXPECT_EQ(white.row(0)[1], white.row(0)[2]);
    }
}

TEST(RenditionTest, gainsThatLessenAllChannelsAlikeDarken)
{
    const Rendition half(
        {0.5, 0.0, 0.0, 0.0, 0.5, 0.0, 0.0, 0.0, 0.5}, 0.0, ToneCurve(kStraightCurve));
    EXPECT_NEAR(RenditionSamples::applied(half, pixelOf(20000, 20000, 20000)).row(0)[0],
                SrgbTransfer::tables().encoded(10000),
                3);
}

TEST(RenditionTest, theMatrixMixesChannelsRowByRow)
{
    const Rendition rendition(
        {1.0, 0.5, 0.0, 0.0, 1.5, 0.0, 0.25, 0.0, 1.25}, 0.0, ToneCurve(kStraightCurve));
    const Bitmap picture = RenditionSamples::applied(rendition, pixelOf(8000, 4000, 2000));
    const SrgbTransfer& tables = SrgbTransfer::tables();
    // Divided by 1.5, the least sum of a row, and multiplied by it again.
    EXPECT_NEAR(picture.row(0)[0], tables.encoded(10000), 6);
    EXPECT_NEAR(picture.row(0)[1], tables.encoded(6000), 6);
    EXPECT_NEAR(picture.row(0)[2], tables.encoded(4500), 6);
}

TEST(RenditionTest, aMatrixTimesItsInverseChangesNothing)
{
    const ColorMatrix matrix{1.5, -0.4, -0.1, -0.2, 1.6, -0.4, 0.0, -0.5, 1.5};
    const ColorMatrix product = multiplied(matrix, inverted(matrix));
    for (std::size_t i = 0; i < product.size(); ++i) {
        EXPECT_NEAR(product.at(i), kIdentityMatrix.at(i), 1e-12);
    }
    EXPECT_EQ(inverted({1.0, 2.0, 3.0, 2.0, 4.0, 6.0, 0.0, 0.0, 1.0}), kIdentityMatrix);
}
