#include "JpegConversion.h"

#include "BitmapImage.h"
#include "CorvaneDelegate.h"
#include "JpegDestination.h"
#include "JpegProof.h"
#include "PreviewFinder.h"
#include "Scripting.h"
#include "SourceFile.h"
#include "SourcePicture.h"
#include "SystemLog.h"
#include "TargetSize.h"
#include "Tasks.h"
#include "Texts.h"
#include "Upright.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <new>

using namespace Qt::StringLiterals;

namespace
{

bool isSameFile(const QString& left, const QString& right)
{
    if (left == right) {
        return true;
    }
    const QString canonical = QFileInfo(left).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(right).canonicalFilePath();
}

bool isFileOf(const PhotoEvidence& evidence, const QString& path)
{
    return std::ranges::any_of(evidence.files,
                               [&](const QString& file) { return isSameFile(file, path); });
}

/// What a copy of the photo tells of what its original tells.
ImageProperties forCopy(ImageProperties properties, Photo& photo)
{
    if (!properties.hasGps()) {
        const double latitude = photo.latitude();
        const double longitude = photo.longitude();
        // No position is 0, 0, which must not take the place of one that could not be read.
        if (properties.isWhole() || latitude != 0.0 || longitude != 0.0) {
            properties.setGps(JpegConversion::gpsPosition(latitude, longitude));
        }
    }
    if (properties.hasIptc()) {
        properties.removeIptcKeywords();
    }
    properties.removeExifKeywords();
    properties.removeXmpSubjects();
    return properties;
}

QString outputTooLarge(const QString& path)
{
    return Texts::translated("The output size of %1 is larger than this program writes").arg(path);
}

Error memoryTooShort(const QString& path)
{
    return {ErrorCode::OutOfSpace,
            Texts::translated("There is not enough memory to convert %1. Close other programs, and "
                              "scan again")
                .arg(path)};
}

/// Why no copy came of a file that is good as far as it could be told.
Error noCopy(const QString& path, const Error& reason)
{
    // What contradicts the photo's preview does so in every size and quality.
    const QString text =
        reason.code == ErrorCode::Damaged
            ? Texts::translated("No copy of %1 could be made, since %2. Look at the photo, and "
                                "report it if nothing is wrong with it")
            : Texts::translated("No copy of %1 could be made, since %2. Scan again with another "
                                "size or quality, and report it if that fails as well");
    return {reason.code, text.arg(path, reason.message)};
}

Result<QSize> wantedSize(QSize size, const QString& source, const OutputSize& wanted)
{
    const std::optional<QSize> target = targetSize(size, wanted);
    if (!target) {
        return Error{ErrorCode::Unsupported,
                     isTargetTooLarge(size, wanted) ? outputTooLarge(source)
                                                    : Texts::noPixelsLeft(source)};
    }
    return *target;
}

/// Decoded strictly: Qt's reader would make up the rows that a file lacks.
std::optional<Preview> uprightJpeg(const QByteArray& bytes)
{
    const QImage stored = PreviewFinder::reduced(bytes);
    const Result<ImageProperties> properties = ImageProperties::fromBytes(bytes);
    if (stored.isNull() || !properties.ok()) {
        return std::nullopt;
    }
    const ImageFacts facts = properties.value().facts();
    return Preview{Upright::turned(stored, facts.orientation),
                   qint64{facts.pixels.width()} * facts.pixels.height()};
}

/// Of the types that Qt reads.
std::optional<Preview> uprightPicture(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    const QSize largest(PreviewFinder::kLongestSide, PreviewFinder::kLongestSide);
    if (size.width() > largest.width() || size.height() > largest.height()) {
        reader.setScaledSize(size.scaled(largest, Qt::KeepAspectRatio));
    }
    QImage upright = reader.read();
    BitmapImage::convertToSrgb(upright);
    return upright.isNull() ? std::nullopt
                            : std::optional(Preview{upright, qint64{size.width()} * size.height()});
}

/// The library's own rendering of an unedited photo in sRGB, turned and mirrored so that it lies as
/// the rows of its master, which has this Exif orientation.
std::optional<Preview> libraryPreview(const PhotoEvidence& evidence, int orientation)
{
    const Result<SourceFile> file = SourceFile::read(evidence.previewPath);
    if (!file.ok()) {
        return std::nullopt;
    }
    const QByteArray& bytes = file.value().bytes;
    const std::optional<Preview> upright =
        file.value().type == FileType::Jpeg ? uprightJpeg(bytes) : uprightPicture(bytes);
    if (!upright) {
        return std::nullopt;
    }
    // The library's rotation holds the file's own and what the person turned after that.
    const int ownTurn = Upright::rotation(orientation) - evidence.rotation;
    return Preview{
        Upright::stored(upright->image.transformed(QTransform().rotate(ownTurn)), orientation),
        upright->pixels};
}

/// Whether the library's preview shows what the file does.
bool isShownByLibrary(const QString& source, const PhotoEvidence& evidence)
{
    return !evidence.edited && !evidence.previewPath.isEmpty() &&
           !isSameFile(source, evidence.previewPath);
}

/// What is read of a photo beside the picture in its file.
struct Surroundings {
    Result<ImageProperties> properties;
    std::optional<Preview> libraryPreview; ///< where there is one that shows the same

    [[nodiscard]] static Surroundings of(const QString& source, const PhotoEvidence& evidence)
    {
        Surroundings found{.properties = ImageProperties::read(source), .libraryPreview = {}};
        if (found.properties.ok() && isShownByLibrary(source, evidence)) {
            const int orientation = found.properties.value().facts().orientation;
            found.libraryPreview = ::libraryPreview(evidence, orientation);
        }
        return found;
    }

    /// What else shows the photo: the preview `embedded` in its file, and the library's; those of
    /// more pixels first.
    [[nodiscard]] QList<QImage> references(const std::optional<Preview>& embedded) const
    {
        QList<QImage> all;
        if (embedded) {
            all.append(embedded->image);
        }
        if (libraryPreview) {
            const bool isLarger = !embedded || libraryPreview->pixels > embedded->pixels;
            all.insert(isLarger ? 0 : 1, libraryPreview->image);
        }
        return all;
    }
};

/// What the library's preview shows to be damaged, where the file shows nothing itself. Beside a
/// finished picture the preview may be the one that is out of date.
std::optional<QString> complaintByLibrary(const SourcePicture& picture,
                                          const std::optional<Preview>& preview)
{
    if (picture.preview() || !preview) {
        return std::nullopt;
    }
    const std::optional<QString> complaint = picture.complaintBy(preview->image);
    return complaint && picture.isFinished()
               ? u"it does not show what the library's preview shows, its picture data is corrupt "
                 "or a program changed the file since; look at it, and if it is as it should be, "
                 "let iPhoto make its preview anew"_s
               : complaint;
}

Result<ProvedJpeg> converted(const QString& source, Photo& photo, const CorvaneDelegate& delegate)
{
    const PhotoEvidence evidence = photo.evidence();
    if (!isFileOf(evidence, source)) {
        return Error{ErrorCode::Damaged, Texts::pictureOfAnotherPhoto(source)};
    }
    auto [opened, surroundings] = Tasks::both([&] { return SourcePicture::open(source); },
                                              [&] { return Surroundings::of(source, evidence); });
    if (!opened.ok()) {
        return opened.error();
    }
    if (!surroundings.properties.ok()) {
        return surroundings.properties.error();
    }
    SourcePicture picture = std::move(opened).value();
    if (const auto complaint = complaintByLibrary(picture, surroundings.libraryPreview)) {
        return SourceFile::errorOf(source, ErrorCode::Damaged, *complaint);
    }
    const ImageProperties properties = forCopy(std::move(surroundings.properties).value(), photo);
    const Result<QSize> size = wantedSize(picture.size(), source, OutputSize::of(delegate));
    if (!size.ok()) {
        return size.error();
    }
    const QList<QImage> references = surroundings.references(picture.preview());
    const auto kind =
        picture.isFinished() ? JpegProof::Source::Finished : JpegProof::Source::Sensor;
    const Result<QImage> rendered = std::move(picture).rendered(size.value(), references);
    if (!rendered.ok()) {
        return noCopy(source, rendered.error());
    }
    const Result<QByteArray> jpeg =
        JpegDestination::encode(rendered.value(), properties, delegate.compressionFactor());
    if (!jpeg.ok()) {
        systemLog(u"***Could not create data from image destination ***"_s);
        return noCopy(source, jpeg.error());
    }
    const Result<void> proof = JpegProof::prove(jpeg.value(), rendered.value(), references, kind);
    if (!proof.ok()) {
        return noCopy(source, proof.error());
    }
    return ProvedJpeg{jpeg.value(), rendered.value()};
}

} // namespace

Result<ProvedJpeg>
JpegConversion::convert(const QString& source, Photo& photo, const CorvaneDelegate& delegate)
{
    try {
        Result<ProvedJpeg> made = converted(source, photo, delegate);
        return made.ok() || made.error().code != ErrorCode::OutOfSpace ? std::move(made)
                                                                       : memoryTooShort(source);
    } catch (const std::bad_alloc&) {
        return memoryTooShort(source);
    }
}

GpsPosition JpegConversion::gpsPosition(double latitude, double longitude)
{
    return GpsPosition{.latitude = std::abs(latitude),
                       .latitudeRef = latitude >= 0.0 ? u"N"_s : u"S"_s,
                       .longitude = std::abs(longitude),
                       .longitudeRef = longitude >= 0.0 ? u"E"_s : u"W"_s};
}
