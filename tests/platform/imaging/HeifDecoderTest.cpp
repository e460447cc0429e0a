#include "HeifDecoder.h"

#include "HeifSamples.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "ImagePropertiesContent.h"
#include "QtPrinters.h"

#include <QColorSpace>

#include <gtest/gtest.h>

namespace
{

constexpr QSize kHeifSize(120, 90);

// ISO/IEC 23091-2, tables 2 and 3.
constexpr int kBt709{1};
constexpr int kBt2020{9};
constexpr int kDisplayP3{12};
constexpr int kLinearTransfer{8};
constexpr int kSrgbTransfer{13};
constexpr int kPqTransfer{16};
constexpr int kHlgTransfer{18};

Bitmap decoded(const QByteArray& file)
{
    const auto bitmap = HeifDecoder::decode(file);
    EXPECT_TRUE(bitmap.ok()) << qPrintable(bitmap.ok() ? QString() : bitmap.error().message);
    return bitmap.ok() ? bitmap.value() : Bitmap();
}

ImageProperties propertiesOf(const QByteArray& file)
{
    const auto properties = ImageProperties::fromBytes(file);
    EXPECT_TRUE(properties.ok());
    return properties.ok() ? properties.value() : ImageProperties();
}

QByteArray exifOf(uint16_t orientation)
{
    Exiv2::ExifData exif;
    exif["Exif.Image.Orientation"] = orientation;
    exif["Exif.Photo.SubjectArea"].setValue("30 20 8 8");
    Exiv2::Blob block;
    Exiv2::ExifParser::encode(block, Exiv2::littleEndian, exif);
    return {reinterpret_cast<const char*>(block.data()), std::ssize(block)};
}

/// A quarter turn clockwise, as Exif orientation 6 asks for.
Bitmap turned(const Bitmap& bitmap)
{
    Bitmap result(bitmap.pixelsHigh(), bitmap.pixelsWide(), bitmap.transfer());
    for (int y = 0; y < result.pixelsHigh(); ++y) {
        const auto into = result.row(y);
        for (int x = 0; x < result.pixelsWide(); ++x) {
            const auto from = bitmap.row(bitmap.pixelsHigh() - 1 - x);
            std::copy_n(
                &from[3 * static_cast<std::size_t>(y)], 3, &into[3 * static_cast<std::size_t>(x)]);
        }
    }
    return result;
}

Bitmap mirrored(const Bitmap& bitmap)
{
    Bitmap result = bitmap;
    for (int y = 0; y < result.pixelsHigh(); ++y) {
        const auto from = bitmap.row(y);
        const auto into = result.row(y);
        for (std::size_t i = 0; i < into.size(); ++i) {
            into[i] = from[into.size() - 3 - i / 3 * 3 + i % 3];
        }
    }
    return result;
}

} // namespace

TEST(HeifDecoderTest, turnsAndMirroringOfTheFileArePartOfThePicture)
{
    const Bitmap scene = ImageBuilder::scene(kHeifSize);
    EXPECT_LT(ImageBuilder::difference(decoded(HeifSamples::file(scene)), scene), 0.02);
    const QByteArray sixth = HeifSamples::file(scene, {.orientation = 6});
    EXPECT_LT(ImageBuilder::difference(decoded(sixth), turned(scene)), 0.02);
    const QByteArray second = HeifSamples::file(scene, {.orientation = 2});
    EXPECT_LT(ImageBuilder::difference(decoded(second), mirrored(scene)), 0.02);
}

TEST(HeifDecoderTest, theCropOfTheFileIsPartOfThePicture)
{
    // Encoders code even sides and crop the odd ones.
    const Bitmap scene = ImageBuilder::scene({119, 89});
    const QByteArray file = HeifSamples::file(scene);
    EXPECT_LT(ImageBuilder::difference(decoded(file), scene), 0.02);
    EXPECT_EQ(HeifDecoder::size(file), QSize(119, 89));
}

TEST(HeifDecoderTest, thePropertiesAreThoseOfTheUprightPicture)
{
    for (const int orientation : {1, 3, 6, 8}) {
        for (const uint16_t exifOrientation : {uint16_t{1}, uint16_t{6}}) {
            const QByteArray file =
                HeifSamples::file(ImageBuilder::scene(kHeifSize),
                                  {.orientation = orientation, .exif = exifOf(exifOrientation)});
            const ImageProperties properties = propertiesOf(file);
            const Exiv2::ExifData& exif = properties.content().exif;
            const auto tag = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
            ASSERT_NE(tag, exif.end());
            EXPECT_EQ(tag->toLong(), 1);
            EXPECT_EQ(properties.facts().orientation, 1);
            EXPECT_EQ(properties.facts().pixels, decoded(file).size());
        }
    }
}

TEST(HeifDecoderTest, placesInRowsThatWereTurnedAreLeftOut)
{
    const Bitmap scene = ImageBuilder::scene(kHeifSize);
    const auto hasArea = [](const QByteArray& file) {
        const ImageProperties properties = propertiesOf(file);
        const Exiv2::ExifData& exif = properties.content().exif;
        return exif.findKey(Exiv2::ExifKey("Exif.Photo.SubjectArea")) != exif.end();
    };
    EXPECT_TRUE(hasArea(HeifSamples::file(scene, {.exif = exifOf(1)})));
    EXPECT_FALSE(hasArea(HeifSamples::file(scene, {.orientation = 6, .exif = exifOf(6)})));
    EXPECT_FALSE(hasArea(HeifSamples::file(scene, {.orientation = 8, .exif = exifOf(1)})));
}

TEST(HeifDecoderTest, whatLibheifComplainsOfIsDamage)
{
    QByteArray file = HeifSamples::file(ImageBuilder::scene(kHeifSize));
    const qsizetype data = file.indexOf("mdat") + 4;
    file.replace(data, file.size() - data, QByteArray(file.size() - data, '\x5A'));
    // The decoder beneath has more to say than its caller.
    testing::internal::CaptureStderr();
    const auto bitmap = HeifDecoder::decode(file);
    static_cast<void>(testing::internal::GetCapturedStderr());
    ASSERT_FALSE(bitmap.ok());
    EXPECT_EQ(bitmap.error().code, ErrorCode::Damaged);
    EXPECT_FALSE(HeifDecoder::decode("no picture").ok());
}

TEST(HeifDecoderTest, theThumbnailLiesAsThePictureDoes)
{
    const Bitmap scene = ImageBuilder::scene(kHeifSize);
    EXPECT_FALSE(HeifDecoder::thumbnail(HeifSamples::file(scene)).has_value());
    const auto thumbnail = HeifDecoder::thumbnail(
        HeifSamples::file(scene, {.orientation = 6, .thumbnail = ImageBuilder::scene({120, 88})}));
    ASSERT_TRUE(thumbnail.has_value());
    EXPECT_EQ(thumbnail->size(), QSize(44, 60));
}

TEST(HeifDecoderTest, namedColoursAreThoseOfTheirProfile)
{
    const Bitmap scene = ImageBuilder::scene(kHeifSize);
    const QByteArray p3 = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    const Bitmap byProfile = decoded(HeifSamples::file(scene, {.icc = p3}));
    const Bitmap byName =
        decoded(HeifSamples::file(scene, {.primaries = kDisplayP3, .transfer = kSrgbTransfer}));
    EXPECT_GT(ImageBuilder::difference(byName, scene), 0.015);
    EXPECT_LT(ImageBuilder::difference(byName, byProfile), 0.005);
    const Bitmap wider =
        decoded(HeifSamples::file(scene, {.primaries = kBt2020, .transfer = kSrgbTransfer}));
    EXPECT_GT(ImageBuilder::difference(wider, scene), ImageBuilder::difference(byName, scene));
}

TEST(HeifDecoderTest, srgbByNameStaysAsItIs)
{
    const Bitmap scene = ImageBuilder::scene(kHeifSize);
    const QByteArray file =
        HeifSamples::file(scene, {.primaries = kBt709, .transfer = kSrgbTransfer});
    EXPECT_LT(ImageBuilder::difference(decoded(file), scene), 0.01);
}

TEST(HeifDecoderTest, namedCurvesAreFollowed)
{
    const Bitmap linear = ImageBuilder::flat(kHeifSize, 14000);
    const Bitmap lighter =
        decoded(HeifSamples::file(linear, {.primaries = kBt709, .transfer = kLinearTransfer}));
    // IEC 61966-2-1 encodes a light of 0.2136 as 0.4995.
    EXPECT_NEAR(lighter.row(40)[60], 32736, 500);
    // ITU-R BT.709: 0.5 is a light of 0.2597, which sRGB encodes as 0.5466.
    const Bitmap camera = decoded(HeifSamples::file(ImageBuilder::flat(kHeifSize, 32768),
                                                    {.primaries = kBt709, .transfer = kBt709}));
    EXPECT_NEAR(camera.row(40)[60], 35820, 500);
}

TEST(HeifDecoderTest, lightBeyondAScreenIsRefusedInWords)
{
    for (const int transfer : {kPqTransfer, kHlgTransfer}) {
        const auto bitmap = HeifDecoder::decode(HeifSamples::file(
            ImageBuilder::scene(kHeifSize), {.primaries = kBt2020, .transfer = transfer}));
        ASSERT_FALSE(bitmap.ok());
        EXPECT_EQ(bitmap.error().code, ErrorCode::Unsupported);
        EXPECT_TRUE(bitmap.error().message.contains(QStringLiteral("high dynamic range")));
    }
}

TEST(HeifDecoderTest, transparentPlacesAreWhite)
{
    const Bitmap black = ImageBuilder::flat(kHeifSize, 0);
    EXPECT_NEAR(decoded(HeifSamples::file(black, {.alpha = 0})).row(40)[60], 65535, 700);
    EXPECT_NEAR(decoded(HeifSamples::file(black, {.alpha = 128})).row(40)[60], 32639, 700);
    EXPECT_NEAR(decoded(HeifSamples::file(black, {.alpha = 255})).row(40)[60], 0, 700);
}

TEST(HeifDecoderTest, moreThanEightBitsAreKept)
{
    // Between two steps of 8 bits.
    const Bitmap grey = ImageBuilder::flat(kHeifSize, 20000);
    const Bitmap kept = decoded(HeifSamples::file(grey, {.bits = 10}));
    EXPECT_NEAR(kept.row(40)[60], 20000, 80);
    EXPECT_NE(kept.row(40)[60] % 257, 0);
}
