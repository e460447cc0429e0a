#include "JpegDestination.h"

#include "BitmapImage.h"
#include "ByteAverages.h"
#include "ColorProfile.h"
#include "JpegEncoder.h"
#include "MetadataSegments.h"
#include "ReducedPicture.h"
#include "Resampler.h"

#include <algorithm>

namespace
{

/// From this quality on the loss of 4:2:0 would be larger than that of the quantisation.
constexpr double kFullChromaQuality = 0.9;

/// The longest side of an Exif thumbnail (CIPA DC-008 gives 160 x 120), and its quality.
constexpr int kThumbnailSide = 160;
constexpr double kThumbnailQuality = 0.7;

/// Pixels a side that are averaged at once, and the least longest side of what remains.
constexpr int kAveraged = 4;
constexpr int kAveragedSide = 4 * kThumbnailSide;

/// A small JPEG for the Exif block; empty where none can be made, which costs no photo anything.
QByteArray thumbnailOf(const QImage& picture)
{
    const QSize bounds(kThumbnailSide, kThumbnailSide);
    QSize size = picture.size();
    if (size.width() > kThumbnailSide || size.height() > kThumbnailSide) {
        size = size.scaled(bounds, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    }
    // Large pictures first as their values are, which is much faster and shows no difference here.
    const bool isLarge = std::max(picture.width(), picture.height()) >= kAveragedSide * kAveraged;
    const QImage averaged = isLarge ? ByteAverages::of(picture, kAveraged) : picture;
    const Result<Bitmap> small = Resampler::scale(ReducedPicture::of(averaged), size);
    if (!small.ok()) {
        return {};
    }
    const Result<QByteArray> jpeg = JpegDestination::encodePlain(small.value(), kThumbnailQuality);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

} // namespace

Result<QByteArray>
JpegDestination::encode(const QImage& picture, const ImageProperties& properties, double quality)
{
    JpegEncoder::Options options;
    options.quality = JpegEncoder::libjpegQuality(quality);
    options.chroma =
        quality < kFullChromaQuality ? JpegEncoder::Chroma::Quarter : JpegEncoder::Chroma::Full;
    options.segments = MetadataSegments::build(properties, picture.size(), thumbnailOf(picture));
    options.iccProfile = ColorProfile::sRgb();
    return JpegEncoder::encode(picture, options);
}

Result<QByteArray>
JpegDestination::encode(const Bitmap& bitmap, const ImageProperties& properties, double quality)
{
    return encode(BitmapImage::toImage(bitmap), properties, quality);
}

Result<QByteArray> JpegDestination::encodePlain(const QImage& picture, double quality)
{
    JpegEncoder::Options options;
    options.quality = JpegEncoder::libjpegQuality(quality);
    options.scans = JpegEncoder::Scans::Sequential;
    return JpegEncoder::encode(picture, options);
}

Result<QByteArray> JpegDestination::encodePlain(const Bitmap& bitmap, double quality)
{
    return encodePlain(BitmapImage::toImage(bitmap), quality);
}
