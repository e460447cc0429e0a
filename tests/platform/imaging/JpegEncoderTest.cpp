#include "JpegEncoder.h"

#include "ColorProfile.h"
#include "ImageBuilder.h"
#include "JpegDecoder.h"
#include "JpegDestination.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

constexpr QSize kPictureSize(120, 90);

QByteArray encoded(const Bitmap& bitmap, const JpegEncoder::Options& options)
{
    const auto jpeg = JpegEncoder::encode(bitmap, options);
    EXPECT_TRUE(jpeg.ok());
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

/// Sampling factors of the first component in the progressive frame header (SOF2).
int samplingOf(const QByteArray& jpeg)
{
    const qsizetype frame = jpeg.indexOf(QByteArray("\xFF\xC2", 2));
    return frame < 0 ? -1 : static_cast<quint8>(jpeg.at(frame + 11));
}

QByteArray withMetadata(double quality)
{
    const auto jpeg =
        JpegDestination::encode(ImageBuilder::scene(kPictureSize), ImageProperties(), quality);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

} // namespace

TEST(JpegEncoderTest, qualityIsRoundedToPercentAndKeptInRange)
{
    EXPECT_EQ(JpegEncoder::libjpegQuality(0.85), 85);
    EXPECT_EQ(JpegEncoder::libjpegQuality(0.854), 85);
    EXPECT_EQ(JpegEncoder::libjpegQuality(0.856), 86);
    EXPECT_EQ(JpegEncoder::libjpegQuality(1.0), 100);
    EXPECT_EQ(JpegEncoder::libjpegQuality(7.0), 100);
    EXPECT_EQ(JpegEncoder::libjpegQuality(0.0), 1);
    EXPECT_EQ(JpegEncoder::libjpegQuality(-1.0), 1);
    EXPECT_EQ(JpegEncoder::libjpegQuality(std::numeric_limits<double>::quiet_NaN()), 1);
}

TEST(JpegEncoderTest, chromaIsSubsampledBelowNineTenths)
{
    EXPECT_EQ(samplingOf(withMetadata(0.89)), 0x22);
    EXPECT_EQ(samplingOf(withMetadata(0.9)), 0x11);
    EXPECT_EQ(samplingOf(withMetadata(1.0)), 0x11);
}

TEST(JpegEncoderTest, onlyThumbnailsAreSequential)
{
    const auto plain = JpegDestination::encodePlain(ImageBuilder::scene(kPictureSize), 0.9);
    ASSERT_TRUE(plain.ok());
    EXPECT_EQ(samplingOf(plain.value()), -1);
    EXPECT_TRUE(plain.value().contains(QByteArray("\xFF\xC0", 2)));
}

TEST(JpegEncoderTest, higherQualityIsLargerAndCloser)
{
    const Bitmap scene = ImageBuilder::scene(kPictureSize);
    JpegEncoder::Options low;
    low.quality = 30;
    JpegEncoder::Options high;
    high.quality = 95;
    high.chroma = JpegEncoder::Chroma::Full;
    const QByteArray small = encoded(scene, low);
    const QByteArray large = encoded(scene, high);
    EXPECT_LT(small.size(), large.size());
    const auto one = JpegDecoder::decode(small);
    const auto two = JpegDecoder::decode(large);
    ASSERT_TRUE(one.ok() && two.ok());
    EXPECT_LT(ImageBuilder::difference(two.value(), scene),
              ImageBuilder::difference(one.value(), scene));
    EXPECT_LT(JpegDecoder::meanError(large), JpegDecoder::meanError(small));
}

TEST(JpegEncoderTest, linearAndEncodedPicturesGiveTheSameFile)
{
    const auto linear =
        JpegDestination::encodePlain(ImageBuilder::scene(kPictureSize, Transfer::Linear), 0.9);
    const auto sRgb = JpegDestination::encodePlain(ImageBuilder::scene(kPictureSize), 0.9);
    ASSERT_TRUE(linear.ok() && sRgb.ok());
    EXPECT_EQ(linear.value(), sRgb.value());
}

TEST(JpegEncoderTest, profileIsEmbeddedAndLeavesColoursAlone)
{
    const QByteArray jpeg = withMetadata(1.0);
    EXPECT_TRUE(jpeg.contains("ICC_PROFILE"));
    EXPECT_TRUE(jpeg.contains(ColorProfile::sRgb()));
    const auto decoded = JpegDecoder::decode(jpeg);
    ASSERT_TRUE(decoded.ok());
    EXPECT_LT(ImageBuilder::difference(decoded.value(), ImageBuilder::scene(kPictureSize)), 0.01);
}

TEST(JpegEncoderTest, segmentsStandBeforeThePictureInTheirOrder)
{
    JpegEncoder::Options options;
    options.segments = {{0xE1, "Exif-like"}, {0xED, "IPTC-like"}};
    const QByteArray jpeg = encoded(ImageBuilder::scene(kPictureSize), options);
    EXPECT_EQ(jpeg.indexOf(QByteArray("\xFF\xE1\x00\x0B"
                                      "Exif-like",
                                      13)),
              2);
    EXPECT_GT(jpeg.indexOf("IPTC-like"), 2);
    EXPECT_LT(jpeg.indexOf("IPTC-like"), jpeg.indexOf(QByteArray("\xFF\xC2", 2)));
    EXPECT_FALSE(jpeg.contains("JFIF"));
}

TEST(JpegEncoderTest, whatNoJpegCanHoldIsRefused)
{
    JpegEncoder::Options options;
    options.segments = {{0xE1, QByteArray(65534, 'x')}};
    const auto tooLong = JpegEncoder::encode(ImageBuilder::scene(kPictureSize), options);
    ASSERT_FALSE(tooLong.ok());
    EXPECT_EQ(tooLong.error().code, ErrorCode::Internal);
    const auto tooWide = JpegEncoder::encode(ImageBuilder::flat({65501, 1}, 0), {});
    ASSERT_FALSE(tooWide.ok());
    EXPECT_FALSE(JpegEncoder::encode(Bitmap(), {}).ok());
}

TEST(JpegEncoderTest, singlePixelSurvives)
{
    const auto jpeg =
        JpegDestination::encode(ImageBuilder::flat({1, 1}, 40000), ImageProperties(), 0.9);
    ASSERT_TRUE(jpeg.ok());
    const auto decoded = JpegDecoder::decode(jpeg.value());
    ASSERT_TRUE(decoded.ok());
    EXPECT_EQ(decoded.value().size(), QSize(1, 1));
}
