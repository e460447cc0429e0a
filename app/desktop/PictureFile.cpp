#include "PictureFile.h"

#include "BitmapImage.h"
#include "FileType.h"
#include "ImageProperties.h"
#include "PictureLimits.h"
#include "SourcePicture.h"
#include "Texts.h"
#include "Upright.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageReader>

#include <utility>

namespace
{

/// The largest size within the bounds that has the aspect of `size`; `size` where it fits.
QSize fitted(QSize size, QSize within)
{
    if (size.width() <= within.width() && size.height() <= within.height()) {
        return size;
    }
    return size.scaled(within, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

Error noPicture(const QString& path, ErrorCode code, const QString& reason)
{
    return {code,
            QCoreApplication::translate("PictureFile", "%1 cannot be shown: %2").arg(path, reason)};
}

Error errorOf(const QImageReader& reader, const QString& path)
{
    const ErrorCode code = reader.error() == QImageReader::UnsupportedFormatError
                               ? ErrorCode::Unsupported
                               : ErrorCode::Damaged;
    return noPicture(path, code, reader.errorString());
}

Result<QImage> readWithQt(const QString& path, QSize within, PictureFile::Turn turn)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(turn == PictureFile::Turn::AsTagged);
    const QSize size = reader.size();
    if (size.isValid()) {
        if (!PictureLimits::holds(size.width(), size.height())) {
            return noPicture(path,
                             ErrorCode::Unsupported,
                             QCoreApplication::translate("PictureFile", "it is too large"));
        }
        // The size is told, and scaled, before the picture is turned.
        const bool onItsSide =
            reader.autoTransform() &&
            reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
        const QSize scaled = fitted(size, onItsSide ? within.transposed() : within);
        if (scaled != size) {
            reader.setScaledSize(scaled);
        }
    }
    QImage image = reader.read();
    if (image.isNull()) {
        return errorOf(reader, path);
    }
    return image;
}

/// RAW photos, and types that Qt has no plugin for.
Result<QImage> readWithOwnDecoders(const QString& path, QSize within, PictureFile::Turn turn)
{
    Result<SourcePicture> picture = SourcePicture::open(path);
    if (!picture.ok()) {
        return picture.error();
    }
    const Result<ImageProperties> properties = ImageProperties::read(path);
    const int orientation = turn == PictureFile::Turn::AsTagged && properties.ok()
                                ? properties.value().facts().orientation
                                : 1;
    const QSize size = fitted(picture.value().size(),
                              Upright::isTransposed(orientation) ? within.transposed() : within);
    QList<QImage> references;
    if (picture.value().preview()) {
        references.append(picture.value().preview()->image);
    }
    const Result<QImage> rendered = std::move(picture).value().rendered(size, references);
    if (!rendered.ok()) {
        return rendered.error();
    }
    return Upright::turned(rendered.value(), orientation);
}

QImage forScreen(QImage image, QSize within)
{
    const QSize size = fitted(image.size(), within);
    if (size != image.size()) {
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    BitmapImage::convertToSrgb(image);
    image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                            : QImage::Format_RGB32);
    return image;
}

} // namespace

Result<QImage> PictureFile::read(const QString& path, QSize within, Turn turn)
{
    const QFileInfo file(path);
    if (!file.isFile() || !file.isReadable()) {
        return Error{file.exists() ? ErrorCode::Unreadable : ErrorCode::NotFound,
                     Texts::fileMissing(path)};
    }
    // Many RAW files are TIFF files to Qt, whose picture would be a thumbnail.
    const bool isRaw = FileTypes::rawExtensions().contains(file.suffix().toLower());
    Result<QImage> image =
        isRaw ? readWithOwnDecoders(path, within, turn) : readWithQt(path, within, turn);
    if (!image.ok() && !isRaw) {
        if (Result<QImage> other = readWithOwnDecoders(path, within, turn); other.ok()) {
            image = std::move(other);
        }
    }
    if (!image.ok()) {
        return image.error();
    }
    QImage shown = forScreen(std::move(image).value(), within);
    if (shown.isNull()) {
        return noPicture(path,
                         ErrorCode::OutOfSpace,
                         QCoreApplication::translate("PictureFile", "there is not enough memory"));
    }
    return shown;
}
