#include "JpegDestination.h"

#include "ColorProfile.h"
#include "JpegEncoder.h"
#include "MetadataSegments.h"
#include "ReducedPicture.h"
#include "Resampler.h"

namespace
{

/// From this quality on the loss of 4:2:0 would be larger than that of the quantisation.
constexpr double kFullChromaQuality = 0.9;

/// The longest side of an Exif thumbnail (CIPA DC-008 gives 160 x 120), and its quality.
constexpr int kThumbnailSide = 160;
constexpr double kThumbnailQuality = 0.7;

/// A small JPEG for the Exif block; empty where none can be made, which costs no photo anything.
QByteArray thumbnailOf(const Bitmap& bitmap)
{
    const QSize bounds(kThumbnailSide, kThumbnailSide);
    QSize size = bitmap.size();
    if (size.width() > kThumbnailSide || size.height() > kThumbnailSide) {
        size = size.scaled(bounds, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    }
    const Result<Bitmap> small = Resampler::scale(ReducedPicture::of(bitmap), size);
    if (!small.ok()) {
        return {};
    }
    const Result<QByteArray> jpeg = JpegDestination::encodePlain(small.value(), kThumbnailQuality);
    return jpeg.ok() ? jpeg.value() : QByteArray();
}

} // namespace

Result<QByteArray>
JpegDestination::encode(const Bitmap& bitmap, const ImageProperties& properties, double quality)
{
    JpegEncoder::Options options;
    options.quality = JpegEncoder::libjpegQuality(quality);
    options.chroma =
        quality < kFullChromaQuality ? JpegEncoder::Chroma::Quarter : JpegEncoder::Chroma::Full;
    options.segments = MetadataSegments::build(properties, bitmap.size(), thumbnailOf(bitmap));
    options.iccProfile = ColorProfile::sRgb();
    return JpegEncoder::encode(bitmap, options);
}

Result<QByteArray> JpegDestination::encodePlain(const Bitmap& bitmap, double quality)
{
    JpegEncoder::Options options;
    options.quality = JpegEncoder::libjpegQuality(quality);
    options.scans = JpegEncoder::Scans::Sequential;
    return JpegEncoder::encode(bitmap, options);
}
