#include "JpegConversion.h"

#include "CorvaneDelegate.h"
#include "JpegDestination.h"
#include "JpegProof.h"
#include "Scripting.h"
#include "SourcePicture.h"
#include "SystemLog.h"
#include "TargetSize.h"
#include "Texts.h"

#include <QColorSpace>
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

Result<ImageProperties> propertiesForCopy(const QString& source, Photo& photo)
{
    Result<ImageProperties> read = ImageProperties::read(source);
    if (!read.ok()) {
        return read.error();
    }
    ImageProperties properties = std::move(read).value();
    if (!properties.hasGps()) {
        const double latitude = photo.latitude();
        const double longitude = photo.longitude();
        properties.setGps(JpegConversion::gpsPosition(latitude, longitude));
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

QString memoryTooShort(const QString& path)
{
    return Texts::translated("There is not enough memory to convert %1").arg(path);
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

/// The library's own rendering of an unedited photo in sRGB, turned so that it lies as the master's
/// rows.
QImage libraryPreview(const PhotoEvidence& evidence)
{
    constexpr int kLongestSideCompared = 1024;
    QImageReader reader(evidence.previewPath);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.width() > kLongestSideCompared || size.height() > kLongestSideCompared) {
        reader.setScaledSize(
            size.scaled(kLongestSideCompared, kLongestSideCompared, Qt::KeepAspectRatio));
    }
    QImage upright = reader.read();
    const QColorSpace colors(QColorSpace::SRgb);
    if (upright.colorSpace().isValid() && upright.colorSpace() != colors) {
        upright.convertToColorSpace(colors);
    }
    return upright.isNull() ? upright
                            : upright.transformed(QTransform().rotate(-evidence.rotation));
}

/// What else shows the photo: the preview `embedded` in its file, and the library's.
QList<QImage> referencesOf(const QString& source,
                           const std::optional<QImage>& embedded,
                           const PhotoEvidence& evidence)
{
    QList<QImage> references;
    if (embedded) {
        references.append(*embedded);
    }
    const bool isMaster = !isSameFile(source, evidence.previewPath);
    if (isMaster && !evidence.edited && !evidence.previewPath.isEmpty()) {
        const QImage preview = libraryPreview(evidence);
        if (!preview.isNull()) {
            references.append(preview);
        }
    }
    return references;
}

Result<ProvedJpeg> converted(const QString& source, Photo& photo, const CorvaneDelegate& delegate)
{
    const PhotoEvidence evidence = photo.evidence();
    if (!isFileOf(evidence, source)) {
        return Error{ErrorCode::Damaged, Texts::pictureOfAnotherPhoto(source)};
    }
    Result<SourcePicture> opened = SourcePicture::open(source);
    if (!opened.ok()) {
        return opened.error();
    }
    SourcePicture picture = std::move(opened).value();
    const Result<ImageProperties> properties = propertiesForCopy(source, photo);
    if (!properties.ok()) {
        return properties.error();
    }
    const Result<QSize> size = wantedSize(picture.size(), source, OutputSize::of(delegate));
    if (!size.ok()) {
        return size.error();
    }
    const QList<QImage> references = referencesOf(source, picture.preview(), evidence);
    const Result<QImage> rendered = std::move(picture).rendered(size.value(), references);
    if (!rendered.ok()) {
        return rendered.error();
    }
    const Result<QByteArray> jpeg =
        JpegDestination::encode(rendered.value(), properties.value(), delegate.compressionFactor());
    if (!jpeg.ok()) {
        systemLog(u"***Could not create data from image destination ***"_s);
        return jpeg.error();
    }
    const Result<void> proof = JpegProof::prove(jpeg.value(), rendered.value(), references);
    if (!proof.ok()) {
        return proof.error();
    }
    return ProvedJpeg{jpeg.value(), rendered.value()};
}

} // namespace

Result<ProvedJpeg>
JpegConversion::convert(const QString& source, Photo& photo, const CorvaneDelegate& delegate)
{
    try {
        return converted(source, photo, delegate);
    } catch (const std::bad_alloc&) {
        return Error{ErrorCode::OutOfSpace, memoryTooShort(source)};
    }
}

GpsPosition JpegConversion::gpsPosition(double latitude, double longitude)
{
    return GpsPosition{.latitude = std::abs(latitude),
                       .latitudeRef = latitude >= 0.0 ? u"N"_s : u"S"_s,
                       .longitude = std::abs(longitude),
                       .longitudeRef = longitude >= 0.0 ? u"E"_s : u"W"_s};
}
