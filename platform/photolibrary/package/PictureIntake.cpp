#include "PictureIntake.h"

#include "BitmapImage.h"
#include "ByteAverages.h"
#include "Clock.h"
#include "ImageSource.h"
#include "JpegDecoder.h"
#include "JpegDestination.h"
#include "Resampler.h"
#include "Upright.h"
#include "Uuid.h"
#include "WholeFile.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace
{

/// The library's own settings of its previews ("previewQuality").
constexpr double kPictureQuality = 5.0 / 6.0;
constexpr int kThumbnailSide = 1024;
constexpr int kMiniatureSide = 360;
/// Longest name in bytes on the file systems of Linux and the Mac, and room for "_1024.jpg".
constexpr qsizetype kLongestName = 255;
constexpr qsizetype kLongestBase = 240;
/// Pictures are read as a whole; no camera or program writes larger ones.
constexpr qint64 kMostBytesOfPicture = 2LL * 1024 * 1024 * 1024 - 1;

double secondsSince2001(const QDateTime& moment)
{
    const QDateTime known = moment.isValid() ? moment : QDateTime::currentDateTimeUtc();
    return static_cast<double>(known.toMSecsSinceEpoch()) / 1000.0 - kSecondsFrom1970To2001;
}

QString baseOf(const QString& fileName)
{
    const qsizetype dot = fileName.lastIndexOf(u'.');
    QString base = dot > 0 ? fileName.left(dot) : fileName;
    while (base.toUtf8().size() > kLongestBase) {
        const bool pair = base.size() > 1 && base.back().isLowSurrogate();
        base.chop(pair ? 2 : 1);
    }
    return base;
}

Error noMemory()
{
    return {ErrorCode::OutOfSpace, u"memory is too short"_s};
}

/// The picture, its longest side at most `side`; never made larger, which the application's own
/// thumbnails of small pictures were not at hand to tell.
Result<QImage> reduced(const QImage& picture, int side)
{
    const QSize size = picture.size().scaled(side, side, Qt::KeepAspectRatio);
    if (size.width() >= picture.width()) {
        return picture;
    }
    // First by whole pixels as their values are, which is much faster.
    const int whole =
        std::clamp(std::max(picture.width(), picture.height()) / side, 1, ByteAverages::kMostSide);
    const QImage averaged = whole == 1 ? picture : ByteAverages::of(picture, whole);
    if (averaged.isNull()) {
        return noMemory();
    }
    const Result<Bitmap> scaled =
        Resampler::scale(BitmapImage::fromImage(averaged), size.expandedTo(QSize(1, 1)));
    return scaled.ok() ? Result<QImage>(BitmapImage::toImage(scaled.value())) : scaled.error();
}

Result<void> encodeInto(QByteArray& target, const QImage& picture)
{
    if (picture.isNull()) {
        return noMemory();
    }
    Result<QByteArray> encoded = JpegDestination::encodePlain(picture, kPictureQuality);
    if (!encoded.ok()) {
        return encoded.error();
    }
    target = std::move(encoded).value();
    return {};
}

/// Thumbnails are made from the small picture, which is then turned.
Result<void> makeThumbnails(PreparedPicture& picture, const QImage& decoded, int orientation)
{
    const Result<QImage> large = reduced(decoded, kThumbnailSide);
    if (!large.ok()) {
        return large.error();
    }
    const QImage upright = Upright::turned(large.value(), orientation);
    const Result<QImage> small = reduced(upright, kMiniatureSide);
    if (!small.ok()) {
        return small.error();
    }
    picture.thumbnailSize = upright.size();
    picture.miniatureSize = small.value().size();
    const Result<void> encoded = encodeInto(picture.thumbnail, upright);
    return encoded.ok() ? encodeInto(picture.miniature, small.value()) : encoded;
}

Result<PreparedPicture> taken(const QString& path, const QString& fileName)
{
    if (!PictureIntake::isUsableName(fileName)) {
        return Error{ErrorCode::Unsupported,
                     u"\"%1\" cannot be the name of a file in the library."_s.arg(fileName)};
    }
    Result<QByteArray> bytes = WholeFile::read(path, kMostBytesOfPicture);
    if (!bytes.ok()) {
        return bytes.error();
    }
    PreparedPicture picture;
    picture.bytes = std::move(bytes).value();
    picture.fileName = fileName;
    picture.baseName = baseOf(fileName);
    const QFileInfo file(path);
    picture.fileModified = secondsSince2001(file.lastModified());
    const QDateTime birth = file.birthTime();
    picture.fileCreated = birth.isValid() ? secondsSince2001(birth) : picture.fileModified;
    return picture;
}

/// A position of exactly 0, 0 is what writers of metadata put where they know of none.
void takeFacts(PreparedPicture& picture, ImageFacts facts)
{
    picture.facts = std::move(facts);
    const ImageFacts& known = picture.facts;
    const bool nowhere = known.latitude == 0.0 && known.longitude == 0.0;
    if (known.latitude && known.longitude && !nowhere) {
        picture.latitude = known.latitude;
        picture.longitude = known.longitude;
    }
}

/// Whether the picture is to be shown in another way than it is stored.
bool isTurned(const PreparedPicture& picture)
{
    return picture.facts.orientation >= 2 && picture.facts.orientation <= 8;
}

/// A JPEG file's picture, all of it read, for what is made of it: where that are thumbnails alone,
/// no larger than they need it.
Result<QImage>
pictureOf(const PreparedPicture& picture, QSize size, const std::optional<ProvedJpeg>& proved)
{
    if (proved && proved->bytes == picture.bytes) {
        return proved->picture;
    }
    return JpegDecoder::decodeReduced(
        picture.bytes, isTurned(picture) ? 1 : JpegDecoder::denominatorFor(size, kThumbnailSide));
}

/// What is kept of a picture of the size `stored` beside the file, whose facts are known.
Result<void> render(PreparedPicture& picture, const QImage& decoded, QSize stored)
{
    const int orientation = picture.facts.orientation;
    picture.stored = stored;
    picture.shown =
        Upright::isTransposed(orientation) ? picture.stored.transposed() : picture.stored;
    picture.rotation = Upright::rotation(orientation);
    Result<void> made = makeThumbnails(picture, decoded, orientation);
    if (made.ok() && isTurned(picture)) {
        made = encodeInto(picture.preview, Upright::turned(decoded, orientation));
    }
    return made;
}

Error noPicture(const QString& path, const Error& reason)
{
    return {reason.code == ErrorCode::OutOfSpace ? reason.code : ErrorCode::Damaged,
            u"The file \"%1\" is no JPEG picture that can be decoded whole: %2."_s.arg(
                path, reason.message)};
}

Error notKept(const QString& path, const Error& reason)
{
    return {reason.code,
            u"The thumbnails and the preview of \"%1\" could not be made: %2."_s.arg(
                path, reason.message)};
}

} // namespace

bool PictureIntake::isUsableName(const QString& name)
{
    return Uuid::isSafeName(name) && name.toUtf8().size() <= kLongestName;
}

Result<PreparedPicture> PictureIntake::jpeg(const QString& path,
                                            const QString& fileName,
                                            const std::optional<ProvedJpeg>& proved)
{
    Result<PreparedPicture> result = taken(path, fileName);
    if (!result.ok()) {
        return result;
    }
    PreparedPicture& picture = result.value();
    const Result<ImageProperties> properties = ImageProperties::fromBytes(picture.bytes);
    takeFacts(picture, properties.ok() ? properties.value().facts() : ImageFacts());
    const QSize stored = JpegDecoder::size(picture.bytes).value_or(QSize());
    const Result<QImage> decoded = pictureOf(picture, stored, proved);
    if (!decoded.ok()) {
        return noPicture(path, decoded.error());
    }
    const Result<void> made = render(picture, decoded.value(), stored);
    return made.ok() ? std::move(result) : Result<PreparedPicture>(notKept(path, made.error()));
}

Result<PreparedPicture>
PictureIntake::raw(const QString& path, const QString& fileName, const QByteArray& preview)
{
    Result<PreparedPicture> result = taken(path, fileName);
    if (!result.ok()) {
        return result;
    }
    PreparedPicture& picture = result.value();
    const Result<ImageProperties> properties = ImageProperties::read(path);
    if (!properties.ok()) {
        return properties.error();
    }
    const QSize shown = JpegDecoder::size(preview).value_or(QSize());
    const Result<QImage> decoded =
        JpegDecoder::decodeReduced(preview, JpegDecoder::denominatorFor(shown, kThumbnailSide));
    if (!decoded.ok()) {
        return noPicture(u"preview of "_s + path, decoded.error());
    }
    takeFacts(picture, properties.value().facts());
    const int orientation = picture.facts.orientation;
    picture.raw = true;
    picture.preview = preview;
    picture.shown = shown;
    picture.stored =
        Upright::isTransposed(orientation) ? picture.shown.transposed() : picture.shown;
    picture.rotation = Upright::rotation(orientation);
    constexpr int kUpright = 1;
    const Result<void> made = makeThumbnails(picture, decoded.value(), kUpright);
    return made.ok() ? std::move(result) : Result<PreparedPicture>(notKept(path, made.error()));
}

Result<PreparedPicture> PictureIntake::rendered(const QString& path)
{
    const Result<Bitmap> decoded = ImageSource::decode(path);
    if (!decoded.ok()) {
        return decoded.error();
    }
    PreparedPicture picture;
    const Result<ImageProperties> properties = ImageProperties::read(path);
    takeFacts(picture, properties.ok() ? properties.value().facts() : ImageFacts());
    const QImage image = BitmapImage::toImage(decoded.value());
    const Result<void> made = image.isNull() ? noMemory() : render(picture, image, image.size());
    return made.ok() ? Result<PreparedPicture>(std::move(picture)) : notKept(path, made.error());
}
