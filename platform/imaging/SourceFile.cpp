#include "SourceFile.h"

#include "BitmapImage.h"
#include "ExifColor.h"
#include "HeifDecoder.h"
#include "JpegSegment.h"
#include "JpegSegments.h"
#include "TiffStructure.h"

#include <QColorSpace>
#include <QFile>
#include <QFileInfo>

#include <new>

namespace
{

/// Files above this are refused: they are read as a whole, and no camera writes such pictures.
constexpr qint64 kMaximumBytes = 2LL * 1024 * 1024 * 1024 - 1;

Result<QByteArray> readBytes(const QString& path)
{
    QFile file(path);
    if (!file.exists()) {
        return SourceFile::errorOf(path, ErrorCode::NotFound, QStringLiteral("it does not exist"));
    }
    // Opening a pipe waits for somebody who writes to it, and a device may have no end.
    if (!QFileInfo(path).isFile()) {
        return SourceFile::errorOf(
            path, ErrorCode::Unreadable, QStringLiteral("it is no plain file"));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return SourceFile::errorOf(path, ErrorCode::Unreadable, file.errorString());
    }
    if (file.size() > kMaximumBytes) {
        return SourceFile::errorOf(path, ErrorCode::Unsupported, QStringLiteral("it is too large"));
    }
    const qint64 size = file.size();
    try {
        QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError || bytes.size() < size) {
            return SourceFile::errorOf(path, ErrorCode::Unreadable, file.errorString());
        }
        return bytes;
    } catch (const std::bad_alloc&) {
        return SourceFile::errorOf(
            path, ErrorCode::OutOfSpace, QStringLiteral("there is not enough memory to read it"));
    }
}

} // namespace

Result<SourceFile> SourceFile::read(const QString& path)
{
    Result<QByteArray> bytes = readBytes(path);
    if (!bytes.ok()) {
        return bytes.error();
    }
    const FileType type = FileTypes::detect(bytes.value(), path);
    return SourceFile{.bytes = std::move(bytes).value(), .type = type};
}

Error SourceFile::errorOf(const QString& path, ErrorCode code, const QString& reason)
{
    return {code, QStringLiteral("The file \"%1\" cannot be used: %2.").arg(path, reason)};
}

std::optional<Preview> SourceFile::preview(const PreviewFinder::Predicate& isWanted) const
{
    if (type == FileType::Heif) {
        const auto thumbnail = HeifDecoder::thumbnail(bytes);
        return thumbnail ? std::optional(Preview{*thumbnail,
                                                 qint64{thumbnail->width()} * thumbnail->height()})
                         : std::nullopt;
    }
    std::optional<Preview> preview =
        type == FileType::Raw ? PreviewFinder::largest(bytes, isWanted) : std::nullopt;
    // Previews without an Exif block of their own are in the colours that the camera was set to.
    if (preview && !preview->image.colorSpace().isValid() && ExifColor::isAdobeRgb(bytes)) {
        preview->image.setColorSpace(QColorSpace::AdobeRgb);
        BitmapImage::convertToSrgb(preview->image);
    }
    return preview;
}

std::optional<QImage> SourceFile::thumbnail(QSize size) const
{
    constexpr QByteArrayView kSignature("Exif\0\0", 6);
    if (type != FileType::Jpeg) {
        return std::nullopt;
    }
    const auto blocks = JpegSegments::payloads(bytes, JpegSegment::kApp1, kSignature);
    return blocks.isEmpty()
               ? std::nullopt
               : PreviewFinder::thumbnail(blocks.first().sliced(kSignature.size()), size);
}

bool SourceFile::mayHideNoise() const
{
    // TIFF 6.0, section 8. Dithered pictures and halftones have fewer, or a palette.
    constexpr quint16 kBitsPerSample = 0x0102;
    constexpr quint64 kFewestBits = 8;
    constexpr quint16 kSamplesPerPixel = 0x0115;
    constexpr quint64 kFewestChannels = 3;
    if (type != FileType::Picture) {
        return type == FileType::Heif;
    }
    const auto tiff = TiffStructure::parse(bytes);
    if (!tiff || tiff->directories().isEmpty()) {
        return false;
    }
    const TiffDirectory& picture = tiff->directories().first();
    return picture.number(kBitsPerSample, 1) >= kFewestBits &&
           picture.number(kSamplesPerPixel, 1) >= kFewestChannels;
}
