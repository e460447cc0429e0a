#include "PreviewFinder.h"

#include "QtPrinters.h"

#include <QDataStream>
#include <QIODevice>

#include <gtest/gtest.h>

namespace
{

QByteArray jpegPart(quint8 code, const QByteArray& content = {})
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << quint8{0xFF} << code;
    if (!content.isEmpty()) {
        stream << static_cast<quint16>(content.size() + 2);
    }
    return bytes + content;
}

/// A whole grey JPEG file that is small for its size (ITU-T T.81, annex B): the only code of each
/// table is one bit of 0, so that two such bits make a block. The sides are multiples of 16.
QByteArray greyJpeg(quint16 width, quint16 height)
{
    const QByteArray oneCode = QByteArray("\1", 1) + QByteArray(15, '\0') + QByteArray(1, '\0');
    QByteArray frame;
    QDataStream(&frame, QIODevice::WriteOnly)
        << quint8{8} << height << width << quint8{1} << quint8{1} << quint8{0x11} << quint8{0};
    return jpegPart(0xD8) + jpegPart(0xDB, QByteArray(1, '\0') + QByteArray(64, '\1')) +
           jpegPart(0xC0, frame) + jpegPart(0xC4, QByteArray(1, '\0') + oneCode) +
           jpegPart(0xC4, QByteArray(1, '\x10') + oneCode) +
           jpegPart(0xDA, QByteArray("\1\1\0\0\x3F\0", 6)) +
           QByteArray(qsizetype{width} * height / 64 / 4, '\0') + jpegPart(0xD9);
}

/// An Exif block of a picture of `size` with that thumbnail.
QByteArray exifBlock(QSize size, const QByteArray& thumbnail)
{
    constexpr quint16 kNumber = 4;
    constexpr quint32 kSecondDirectory = 38;
    constexpr quint32 kThumbnail = 68;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    const auto write = [&stream](quint16 tag, qsizetype value) {
        stream << tag << kNumber << quint32{1} << static_cast<quint32>(value);
    };
    stream << quint16{0x4949} << quint16{42} << quint32{8} << quint16{2};
    write(0xA002, size.width());
    write(0xA003, size.height());
    stream << kSecondDirectory << quint16{2};
    write(0x0201, kThumbnail);
    write(0x0202, thumbnail.size());
    stream << quint32{0};
    return bytes + thumbnail;
}

constexpr QSize kPicture(4000, 3000);

} // namespace

TEST(PreviewFinderTest, aPreviewOf64MebipixelsIsDecodedAndOneOfMoreLeftAlone)
{
    const auto largest =
        PreviewFinder::thumbnail(exifBlock(kPicture, greyJpeg(8192, 8192)), kPicture);
    ASSERT_TRUE(largest.has_value());
    EXPECT_EQ(largest->size(), QSize(1024, 1024));
    EXPECT_FALSE(
        PreviewFinder::thumbnail(exifBlock(kPicture, greyJpeg(8192, 8208)), kPicture).has_value());
}
