#include "PreviewFinder.h"

#include "BitmapImage.h"
#include "JpegDecoder.h"
#include "RawPhoto.h"
#include "SceneComparison.h"
#include "TiffStructure.h"

#include <algorithm>

namespace
{

struct Candidate {
    QByteArrayView bytes;
    qint64 pixels{0};
};

/// JPEG files that the directories point to, the largest first.
QList<Candidate> candidates(const QByteArray& bytes)
{
    QList<Candidate> found;
    const auto tiff = TiffStructure::parse(bytes);
    if (!tiff) {
        return found;
    }
    for (const TiffDirectory& directory : tiff->directories()) {
        const auto ranges = directory.pictureRanges();
        const auto size = static_cast<quint64>(bytes.size());
        if (directory.isRaw() || ranges.size() != 1 || ranges.first().offset > size ||
            ranges.first().length > size - ranges.first().offset) {
            continue;
        }
        const auto view =
            QByteArrayView(bytes).sliced(static_cast<qsizetype>(ranges.first().offset),
                                         static_cast<qsizetype>(ranges.first().length));
        if (!view.startsWith("\xFF\xD8\xFF")) {
            continue;
        }
        if (const auto pixels = JpegDecoder::size(view)) {
            found.append({view, qint64{pixels->width()} * pixels->height()});
        }
    }
    std::ranges::stable_sort(found, std::greater(), &Candidate::pixels);
    return found;
}

qint64 pixelsOf(const std::optional<QImage>& image)
{
    return image ? qint64{image->width()} * image->height() : 0;
}

} // namespace

std::optional<QImage> PreviewFinder::largest(const QByteArray& bytes)
{
    std::optional<QImage> best = RawPhoto::preview(bytes);
    if (best && !SceneComparison::isStructured(SmallPicture::of(*best))) {
        best.reset();
    }
    for (const Candidate& candidate : candidates(bytes)) {
        if (candidate.pixels <= pixelsOf(best)) {
            break;
        }
        const auto bitmap = JpegDecoder::decode(candidate.bytes);
        if (!bitmap.ok()) {
            continue;
        }
        const QImage image = BitmapImage::toImage(bitmap.value());
        if (SceneComparison::isStructured(SmallPicture::of(image))) {
            return image;
        }
    }
    return best;
}
