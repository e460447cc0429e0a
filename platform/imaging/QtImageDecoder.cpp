#include "QtImageDecoder.h"

#include "BitmapImage.h"
#include "ColorProfile.h"
#include "PictureLimits.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>

#include <new>

namespace
{

/// Memory that Qt may take for a picture: eight bytes for each pixel allowed, in megabytes.
constexpr int kMegabytes = static_cast<int>(PictureLimits::kMaximumPixels * 8 / (1024LL * 1024));

Error errorOf(const QImageReader& reader)
{
    if (reader.error() == QImageReader::UnsupportedFormatError) {
        return {ErrorCode::Unsupported,
                QStringLiteral("it is no picture of a kind that can be decoded")};
    }
    return {ErrorCode::Damaged,
            QStringLiteral("its picture does not decode (%1)").arg(reader.errorString())};
}

} // namespace

Result<Bitmap> QtImageDecoder::decode(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(false);
    QImageReader::setAllocationLimit(kMegabytes);
    const QSize size = reader.size();
    if (size.isValid() && !PictureLimits::holds(size.width(), size.height())) {
        return Error{ErrorCode::Unsupported,
                     QStringLiteral("it says it has %1 by %2 pixels, which is too large")
                         .arg(size.width())
                         .arg(size.height())};
    }
    const bool isPng = bytes.startsWith("\x89PNG");
    if (isPng &&
        !PictureLimits::isHeldBy(
            bytes.size(), size.width(), size.height(), PictureLimits::kMaximumPixelsOfPngByte)) {
        return Error{ErrorCode::Damaged,
                     QStringLiteral("it says it has %1 by %2 pixels and is too short for them")
                         .arg(size.width())
                         .arg(size.height())};
    }
    try {
        const QImage image = reader.read();
        if (image.isNull()) {
            return errorOf(reader);
        }
        Bitmap bitmap = BitmapImage::fromImage(image);
        const QByteArray icc = image.colorSpace().iccProfile();
        if (!icc.isEmpty()) {
            ColorProfile::convertToSrgb(bitmap, icc);
        }
        return bitmap;
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace,
                     QStringLiteral("there is not enough memory to decode it")};
    }
}
