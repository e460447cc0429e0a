#include "JpegDecoder.h"

#include "BitmapImage.h"
#include "ByteAverages.h"
#include "ColorProfile.h"
#include "ImageBuilder.h"
#include "JpegDestination.h"
#include "JpegEncoder.h"

#include <QColorSpace>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

#include <jpeglib.h>

#include <array>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace
{

QByteArray sceneJpeg()
{
    const auto jpeg = JpegDestination::encodePlain(ImageBuilder::scene({160, 120}), 0.9);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

/// A flat file of one (grey) or four (CMYK, as Adobe stores it) components.
QByteArray flatJpeg(const std::vector<JSAMPLE>& pixel)
{
    jpeg_compress_struct state{};
    jpeg_error_mgr errors{};
    state.err = jpeg_std_error(&errors);
    jpeg_create_compress(&state);
    unsigned char* memory = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&state, &memory, &length);
    state.image_width = 16;
    state.image_height = 16;
    state.input_components = static_cast<int>(pixel.size());
    state.in_color_space = pixel.size() == 1 ? JCS_GRAYSCALE : JCS_CMYK;
    jpeg_set_defaults(&state);
    jpeg_set_quality(&state, 100, TRUE);
    jpeg_start_compress(&state, TRUE);
    std::vector<JSAMPLE> row;
    for (int x = 0; x < 16; ++x) {
        row.insert(row.end(), pixel.begin(), pixel.end());
    }
    JSAMPLE* rows = row.data();
    for (int y = 0; y < 16; ++y) {
        jpeg_write_scanlines(&state, &rows, 1);
    }
    jpeg_finish_compress(&state);
    QByteArray bytes(reinterpret_cast<const char*>(memory), static_cast<qsizetype>(length));
    jpeg_destroy_compress(&state);
    std::free(memory);
    return bytes;
}

/// A TIFF structure of the entries that tell the colours.
QByteArray exifOf(quint16 colorSpace, const char* interopIndex)
{
    QByteArray exif = QByteArrayLiteral("II*\0\x08\0\0\0"
                                        "\x01\0"
                                        "\x69\x87\x04\0\x01\0\0\0\x1a\0\0\0"
                                        "\0\0\0\0"
                                        "\x02\0"
                                        "\x01\xa0\x03\0\x01\0\0\0CC\0\0"
                                        "\x05\xa0\x04\0\x01\0\0\0\x38\0\0\0"
                                        "\0\0\0\0"
                                        "\x01\0"
                                        "\x01\0\x02\0\x04\0\0\0III\0"
                                        "\0\0\0\0");
    exif.replace("CC", QByteArray(2, static_cast<char>(colorSpace)));
    return exif.replace("III", interopIndex);
}

Bitmap sceneWith(const QByteArray& exif, const QByteArray& icc)
{
    JpegEncoder::Options options;
    options.quality = 95;
    options.chroma = JpegEncoder::Chroma::Full;
    options.segments = {{0xe1, QByteArrayLiteral("Exif\0\0") + exif}};
    options.iccProfile = icc;
    const auto jpeg = JpegEncoder::encode(ImageBuilder::scene({160, 120}), options);
    const auto decoded = jpeg.ok() ? JpegDecoder::decode(jpeg.value()) : jpeg.error();
    EXPECT_TRUE(decoded.ok());
    return decoded.ok() ? decoded.value() : Bitmap();
}

std::array<int, 3> firstPixel(const QByteArray& jpeg)
{
    const auto decoded = JpegDecoder::decode(jpeg);
    EXPECT_TRUE(decoded.ok());
    if (!decoded.ok()) {
        return {-1, -1, -1};
    }
    const auto row = decoded.value().row(0);
    return {row[0] / 257, row[1] / 257, row[2] / 257};
}

} // namespace

TEST(JpegDecoderTest, everyEarlyEndIsDamage)
{
    const QByteArray whole = sceneJpeg();
    ASSERT_TRUE(JpegDecoder::decode(whole).ok());
    for (qsizetype length = 0; length < whole.size(); length += 97) {
        const auto decoded = JpegDecoder::decode(whole.first(length));
        ASSERT_FALSE(decoded.ok()) << length;
        EXPECT_EQ(decoded.error().code, ErrorCode::Damaged) << length;
    }
}

TEST(JpegDecoderTest, overwrittenDataAreDamage)
{
    QByteArray jpeg = sceneJpeg();
    const qsizetype middle = jpeg.size() / 2;
    jpeg.replace(middle, 200, QByteArray(200, '\xFF'));
    EXPECT_FALSE(JpegDecoder::decode(jpeg).ok());
}

TEST(JpegDecoderTest, hugeClaimIsRefusedBeforeMemoryIsTaken)
{
    QByteArray jpeg = sceneJpeg();
    const qsizetype frame = jpeg.indexOf(QByteArray("\xFF\xC0", 2));
    ASSERT_GT(frame, 0);
    jpeg.replace(frame + 5, 4, QByteArray("\xFF\xDC\xFF\xDC", 4));
    const auto decoded = JpegDecoder::decode(jpeg);
    ASSERT_FALSE(decoded.ok());
    EXPECT_EQ(decoded.error().code, ErrorCode::Unsupported);
}

TEST(JpegDecoderTest, greyBecomesEqualChannels)
{
    EXPECT_EQ(firstPixel(flatJpeg({100})), (std::array<int, 3>{100, 100, 100}));
}

TEST(JpegDecoderTest, inksBecomeTheColourTheyPrint)
{
    // With Adobe's marker 255 is no ink: here half cyan and no black.
    const auto pixel = firstPixel(flatJpeg({128, 255, 255, 255}));
    EXPECT_NEAR(pixel[0], 128, 2);
    EXPECT_NEAR(pixel[1], 255, 2);
    EXPECT_NEAR(pixel[2], 255, 2);
    const auto black = firstPixel(flatJpeg({255, 255, 255, 0}));
    EXPECT_NEAR(black[0], 0, 2);
}

TEST(JpegDecoderTest, adobeRgbThatOnlyExifTellsIsConverted)
{
    const Bitmap scene = ImageBuilder::scene({160, 120});
    const Bitmap byExif = sceneWith(exifOf(0xFFFF, "R03"), {});
    const Bitmap byProfile = sceneWith({}, QColorSpace(QColorSpace::AdobeRgb).iccProfile());
    EXPECT_GT(ImageBuilder::difference(byExif, scene), 0.02);
    EXPECT_LT(ImageBuilder::difference(byExif, byProfile), 0.002);
}

TEST(JpegDecoderTest, otherColoursOfExifAreTakenAsSrgb)
{
    const Bitmap scene = ImageBuilder::scene({160, 120});
    for (const QByteArray& exif : {exifOf(0xFFFF, "R98"),
                                   exifOf(0x0101, "R03"),
                                   exifOf(0xFFFF, "R03").first(60),
                                   QByteArray("II*"),
                                   QByteArray()}) {
        EXPECT_LT(ImageBuilder::difference(sceneWith(exif, {}), scene), 0.01);
    }
    // A profile says it better than Exif.
    const Bitmap profiled = sceneWith(exifOf(0xFFFF, "R03"), ColorProfile::sRgb());
    EXPECT_LT(ImageBuilder::difference(profiled, scene), 0.01);
}

TEST(JpegDecoderTest, sizeIsReadFromTheHeader)
{
    EXPECT_EQ(JpegDecoder::size(sceneJpeg()), QSize(160, 120));
    EXPECT_EQ(JpegDecoder::size(QByteArray("no picture")), std::nullopt);
}

TEST(JpegDecoderTest, wholeFilesOfCamerasDecodeAndTheTruncatedOneDoesNot)
{
    const QString folder = QStringLiteral(CORVANE_SHARED_DATA "/other/");
    for (const QString& name :
         {u"me_nikon_d40_portrait.jpg"_s, u"immich_empty_gps.jpg"_s, u"vips_truncated.jpg"_s}) {
        QFile file(folder + name);
        if (file.open(QIODevice::ReadOnly)) {
            EXPECT_EQ(JpegDecoder::decode(file.readAll()).ok(), name != "vips_truncated.jpg"_L1)
                << qPrintable(name);
        }
    }
}

TEST(JpegDecoderTest, aReducedPictureIsAveragedAndStillReadWhole)
{
    const Bitmap scene = ImageBuilder::scene({250, 130});
    const auto jpeg = JpegDestination::encodePlain(scene, 0.95);
    ASSERT_TRUE(jpeg.ok());
    for (const int denominator : {1, 2, 4, 8}) {
        const auto reduced = JpegDecoder::decodeReduced(jpeg.value(), denominator);
        ASSERT_TRUE(reduced.ok());
        const QImage wanted = ByteAverages::of(BitmapImage::toImage(scene), denominator);
        ASSERT_EQ(reduced.value().size(), wanted.size());
        EXPECT_LT(ImageBuilder::difference(BitmapImage::fromImage(reduced.value()),
                                           BitmapImage::fromImage(wanted)),
                  0.02)
            << denominator;
        EXPECT_FALSE(JpegDecoder::decodeReduced(jpeg.value().chopped(30), denominator).ok());
    }
}

TEST(JpegDecoderTest, aReducedPictureOfAnotherProfileIsSrgb)
{
    JpegEncoder::Options options;
    options.iccProfile = ColorProfile::adobeRgb();
    const auto jpeg = JpegEncoder::encode(ImageBuilder::scene({64, 64}), options);
    ASSERT_TRUE(jpeg.ok());
    const auto whole = JpegDecoder::decode(jpeg.value());
    const auto reduced = JpegDecoder::decodeReduced(jpeg.value(), 1);
    ASSERT_TRUE(whole.ok() && reduced.ok());
    QImage expected = BitmapImage::toImage(whole.value());
    expected.setColorSpace(QColorSpace::SRgb);
    EXPECT_TRUE(reduced.value() == expected);
}

TEST(JpegDecoderTest, theDenominatorLeavesAtLeastTheLongestSide)
{
    EXPECT_EQ(JpegDecoder::denominatorFor({4000, 3000}, 512), 4);
    EXPECT_EQ(JpegDecoder::denominatorFor({3000, 4096}, 512), 8);
    EXPECT_EQ(JpegDecoder::denominatorFor({1023, 10}, 512), 1);
    EXPECT_EQ(JpegDecoder::denominatorFor({1024, 10}, 512), 2);
}
