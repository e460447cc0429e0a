#include "PictureLimits.h"

#include "HeifDecoder.h"
#include "HeifSamples.h"
#include "ImageBuilder.h"
#include "ImageProperties.h"
#include "JpegDecoder.h"
#include "JpegDestination.h"
#include "QtImageDecoder.h"
#include "RawPhoto.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QtEndian>

#include <gtest/gtest.h>

namespace
{

constexpr QSize kSmallLimit(32, 32);

template <typename Number>
QByteArray big(Number number)
{
    const Number bytes = qToBigEndian(number);
    return {reinterpret_cast<const char*>(&bytes), sizeof(Number)};
}

/// The most address space that the process ever had, in bytes: memory counts before it is touched.
qint64 peak()
{
    QFile file(QStringLiteral("/proc/self/status"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray status = file.readAll();
    const qsizetype start = status.indexOf("VmPeak:") + 7;
    return status.mid(start, status.indexOf("kB", start) - start).trimmed().toLongLong() * 1024;
}

/// Expects of something that it takes no memory to speak of.
class LittleMemory final
{
public:
    LittleMemory() = default;
    LittleMemory(const LittleMemory&) = delete;
    LittleMemory& operator=(const LittleMemory&) = delete;

    ~LittleMemory()
    {
        constexpr qint64 kLittle = qint64{128} * 1024 * 1024;
        EXPECT_LT(peak() - m_before, kLittle);
    }

private:
    qint64 m_before{peak()};
};

/// A small JPEG whose frame header says that it has these sides.
QByteArray jpegOf(quint16 width, quint16 height)
{
    const auto encoded = JpegDestination::encodePlain(ImageBuilder::scene(kSmallLimit), 0.8);
    QByteArray bytes = encoded.ok() ? encoded.value() : QByteArray();
    qsizetype at = 2;
    while (at + 9 < bytes.size()) {
        const auto marker = static_cast<quint8>(bytes.at(at + 1));
        if (marker >= 0xC0 && marker <= 0xC2) {
            return bytes.replace(at + 5, 4, big(height) + big(width));
        }
        at += 2 + qFromBigEndian<quint16>(bytes.constData() + at + 2);
    }
    ADD_FAILURE() << "there is no frame header";
    return {};
}

/// A chunk of a PNG file (ISO/IEC 15948, 5.3), with its check sum (annex D).
QByteArray chunk(const QByteArray& name, const QByteArray& content)
{
    const QByteArray checked = name + content;
    quint32 sum = 0xFFFFFFFF;
    for (const char byte : checked) {
        sum ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return big(static_cast<quint32>(content.size())) + checked + big(~sum);
}

QByteArray zlib(const QByteArray& bytes)
{
    return qCompress(bytes, 9).sliced(4); // without Qt's own length before it
}

/// A PNG file of flat grey bytes; its sides may be more than it has bytes for.
QByteArray pngOf(quint32 width, quint32 height, const QByteArray& chunks = {})
{
    const QByteArray header = big(width) + big(height) + QByteArray("\x08\0\0\0\0", 5);
    const QByteArray pixels(
        static_cast<qsizetype>(kSmallLimit.height()) * (kSmallLimit.width() + 1), '\0');
    return QByteArray("\x89PNG\r\n\x1A\n") + chunk("IHDR", header) + chunks +
           chunk("IDAT", zlib(pixels)) + chunk("IEND", {});
}

/// A small DNG file whose sensor's directory says that it has these sides.
QByteArray dngOf(quint32 width, quint32 height)
{
    QByteArray bytes = ImageBuilder::dng(ImageBuilder::scene(kSmallLimit, Transfer::Linear));
    const auto state = [&bytes](const QByteArray& tag, quint32 value) {
        const qsizetype at = bytes.indexOf(tag + QByteArray("\x04\0\1\0\0\0", 6));
        ASSERT_GE(at, 8);
        qToLittleEndian(value, bytes.data() + at + 8);
    };
    state(QByteArray("\x00\x01", 2), width);
    state(QByteArray("\x01\x01", 2), height);
    return bytes;
}

/// A HEIC file whose pictures all say that they have these sides (ISO/IEC 23008-12, 6.5.3).
QByteArray heicOf(quint32 width, quint32 height)
{
    QByteArray bytes = HeifSamples::file(ImageBuilder::scene({64, 64}));
    const qsizetype at = bytes.indexOf("ispe");
    EXPECT_GE(at, 0);
    return bytes.replace(at + 8, 8, big(width) + big(height));
}

void expectRefused(const Result<Bitmap>& decoded)
{
    EXPECT_FALSE(decoded.ok());
}

} // namespace

TEST(PictureLimits, aPictureOfAsManyPixelsAsTheLargestSensorsFits)
{
    EXPECT_TRUE(PictureLimits::holds(14204, 10652));
    EXPECT_TRUE(PictureLimits::isHeldBy(qint64{60} * 1024 * 1024, 14204, 10652));
    EXPECT_TRUE(PictureLimits::isHeldBy(500, 700, 700));
    EXPECT_FALSE(PictureLimits::isHeldBy(500, 7000, 7000));
    EXPECT_FALSE(PictureLimits::holds(65501, 1));
    EXPECT_FALSE(PictureLimits::holds(0, 1));
    EXPECT_FALSE(PictureLimits::holds(65500, 65500));
}

TEST(PictureLimits, aFlatJpegOfManyPixelsIsNoneTooMany)
{
    const Bitmap flat = ImageBuilder::flat({4000, 3000}, 30000);
    const auto encoded = JpegDestination::encodePlain(flat, 0.5);
    ASSERT_TRUE(encoded.ok());
    EXPECT_TRUE(JpegDecoder::decode(encoded.value()).ok())
        << encoded.value().size() << " bytes for 12 million pixels";
}

TEST(PictureLimits, aJpegThatClaimsAbsurdSidesTakesNoMemory)
{
    const QByteArray absurd = jpegOf(65500, 65500);
    const QByteArray large = jpegOf(16000, 16000);
    const LittleMemory expected;
    expectRefused(JpegDecoder::decode(absurd));
    expectRefused(JpegDecoder::decode(large));
}

TEST(PictureLimits, aPngThatClaimsAbsurdSidesTakesNoMemory)
{
    ASSERT_TRUE(QtImageDecoder::decode(pngOf(32, 32)).ok()) << "the sample itself decodes";
    const QByteArray absurd = pngOf(65500, 65500);
    const QByteArray large = pngOf(16000, 16000);
    const LittleMemory expected;
    expectRefused(QtImageDecoder::decode(absurd));
    expectRefused(QtImageDecoder::decode(large));
}

TEST(PictureLimits, aTiffThatClaimsAbsurdSidesTakesNoMemory)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImage image(kSmallLimit, QImage::Format_Grayscale8);
    image.fill(99);
    ASSERT_TRUE(image.save(&buffer, "TIFF"));
    const QByteArray width("\x00\x01\x03\x00\x01\x00\x00\x00\x20\x00", 10);
    const QByteArray height("\x01\x01\x03\x00\x01\x00\x00\x00\x20\x00", 10);
    ASSERT_TRUE(bytes.contains(width) && bytes.contains(height));
    bytes.replace(width, width.first(8) + "\xDC\xFF");
    bytes.replace(height, height.first(8) + "\xDC\xFF");
    const LittleMemory expected;
    expectRefused(QtImageDecoder::decode(bytes));
}

TEST(PictureLimits, sensorDataThatClaimAbsurdSidesTakeNoMemory)
{
    ASSERT_TRUE(RawPhoto::open(dngOf(32, 32)).ok()) << "the sample itself opens";
    const QByteArray absurd = dngOf(65500, 65500);
    const QByteArray large = dngOf(16000, 16000);
    const LittleMemory expected;
    EXPECT_FALSE(RawPhoto::open(absurd).ok());
    EXPECT_FALSE(RawPhoto::open(large).ok());
}

TEST(PictureLimits, aHeicThatClaimsAbsurdSidesTakesNoMemory)
{
    ASSERT_TRUE(HeifDecoder::decode(heicOf(64, 64)).ok()) << "the sample itself decodes";
    const QByteArray absurd = heicOf(65500, 65500);
    const LittleMemory expected;
    expectRefused(HeifDecoder::decode(absurd));
}

TEST(PictureLimits, textsThatUnfoldToHugeOnesTakeNoMemory)
{
    const QByteArray bomb = zlib(QByteArray(qsizetype{192} * 1024 * 1024, ' '));
    const QByteArray xmp("XML:com.adobe.xmp\0\1\0\0\0", 22);
    const QByteArray chunks = chunk("iTXt", xmp + bomb) +
                              chunk("zTXt", QByteArray("Raw profile type exif\0\0", 23) + bomb) +
                              chunk("zTXt", QByteArray("Comment\0\0", 9) + bomb);
    const QByteArray profile = chunk("iCCP", QByteArray("icc\0\0", 5) + bomb);
    for (const QByteArray& file : {pngOf(32, 32, chunks), pngOf(32, 32, profile)}) {
        const LittleMemory expected;
        static_cast<void>(ImageProperties::fromBytes(file).ok());
        static_cast<void>(QtImageDecoder::decode(file).ok());
    }
}
