#include "PreviewFinder.h"

#include "JpegDecoder.h"
#include "RawPhoto.h"
#include "SceneComparison.h"
#include "TiffStructure.h"

#include <algorithm>
#include <utility>

namespace
{

using Preview = RawPhoto::Preview;

/// Enough for what previews are looked at for; fewer would show in the colours that are fitted.
constexpr int kLongestPreviewSide = 1024;

struct Candidate {
    QByteArrayView bytes;
    QSize size;
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
        const auto length = static_cast<quint64>(bytes.size());
        if (directory.isRaw() || ranges.size() != 1 || ranges.first().offset > length ||
            ranges.first().length > length - ranges.first().offset) {
            continue;
        }
        const auto view =
            QByteArrayView(bytes).sliced(static_cast<qsizetype>(ranges.first().offset),
                                         static_cast<qsizetype>(ranges.first().length));
        if (!view.startsWith("\xFF\xD8\xFF")) {
            continue;
        }
        if (const auto size = JpegDecoder::size(view)) {
            found.append({view, *size, qint64{size->width()} * size->height()});
        }
    }
    std::ranges::stable_sort(found, std::greater(), &Candidate::pixels);
    return found;
}

/// LibRaw's, where it shows something.
std::optional<Preview> libRawPreview(const QByteArray& bytes)
{
    auto preview = RawPhoto::preview(bytes, kLongestPreviewSide);
    const bool isOfUse = preview && SceneComparison::isStructured(SmallPicture::of(preview->image));
    return isOfUse ? std::move(preview) : std::nullopt;
}

} // namespace

std::optional<QImage> PreviewFinder::largest(const QByteArray& bytes)
{
    const std::optional<Preview> best = libRawPreview(bytes);
    for (const Candidate& candidate : candidates(bytes)) {
        if (best && candidate.pixels <= best->pixels) {
            break;
        }
        const int denominator = JpegDecoder::denominatorFor(candidate.size, kLongestPreviewSide);
        Result<QImage> image = JpegDecoder::decodeReduced(candidate.bytes, denominator);
        if (image.ok() && SceneComparison::isStructured(SmallPicture::of(image.value()))) {
            return std::move(image).value();
        }
    }
    return best ? std::optional(best->image) : std::nullopt;
}
