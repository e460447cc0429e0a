#include "PreviewFinder.h"

#include "JpegDecoder.h"
#include "RawPhoto.h"
#include "SceneComparison.h"
#include "TiffStructure.h"

#include <algorithm>
#include <functional>
#include <span>
#include <vector>

namespace
{

/// How many are looked at: cameras write three at most.
constexpr std::size_t kMostTried = 6;

/// Larger ones of a directory are left alone: to decode them takes long, and cameras write smaller
/// ones beside them.
constexpr qint64 kMostPixelsOfPreview = 64LL * 1024 * 1024;

// Of the Exif directory (CIPA DC-008, 4.6.5).
constexpr quint16 kPixelXDimension = 0xA002;
constexpr quint16 kPixelYDimension = 0xA003;

struct Candidate {
    qint64 pixels{0};
    QByteArrayView jpeg; ///< a file of its own, to be decoded
    QImage decoded{};    ///< where LibRaw has decoded it
};

/// JPEG files that the directories point to, each once.
std::vector<Candidate> ofDirectories(QByteArrayView bytes)
{
    std::vector<Candidate> found;
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
        const auto view = bytes.sliced(static_cast<qsizetype>(ranges.first().offset),
                                       static_cast<qsizetype>(ranges.first().length));
        const bool isKnown = std::ranges::any_of(
            found, [view](const Candidate& other) { return other.jpeg.data() == view.data(); });
        if (isKnown || !view.startsWith("\xFF\xD8\xFF")) {
            continue;
        }
        const QSize size = JpegDecoder::size(view).value_or(QSize(0, 0));
        const qint64 pixels = qint64{size.width()} * size.height();
        if (pixels > 0 && pixels <= kMostPixelsOfPreview) {
            found.push_back({.pixels = pixels, .jpeg = view});
        }
    }
    return found;
}

/// The largest first.
std::vector<Candidate> candidates(const QByteArray& bytes)
{
    std::vector<Candidate> found = ofDirectories(bytes);
    if (const auto preview = RawPhoto::preview(bytes, PreviewFinder::kLongestSide)) {
        // What LibRaw finds stands in a directory as well.
        std::erase_if(found,
                      [&](const Candidate& other) { return other.pixels == preview->pixels; });
        found.push_back({.pixels = preview->pixels, .jpeg = {}, .decoded = preview->image});
    }
    std::ranges::stable_sort(found, std::greater(), &Candidate::pixels);
    return found;
}

QImage imageOf(const Candidate& candidate)
{
    return candidate.decoded.isNull() ? PreviewFinder::reduced(candidate.jpeg) : candidate.decoded;
}

} // namespace

QImage PreviewFinder::reduced(QByteArrayView jpeg)
{
    const QSize size = JpegDecoder::size(jpeg).value_or(QSize());
    const Result<QImage> image =
        JpegDecoder::decodeReduced(jpeg, JpegDecoder::denominatorFor(size, kLongestSide));
    return image.ok() ? image.value() : QImage();
}

std::optional<Preview> PreviewFinder::largest(const QByteArray& bytes, const Predicate& isWanted)
{
    std::optional<Preview> first;
    const std::vector<Candidate> all = candidates(bytes);
    for (const Candidate& candidate : std::span(all).first(std::min(all.size(), kMostTried))) {
        const QImage image = imageOf(candidate);
        const SmallPicture shown = SmallPicture::of(image);
        if (!SceneComparison::isStructured(shown)) {
            continue;
        }
        if (isWanted(image, shown)) {
            return Preview{image, candidate.pixels};
        }
        if (!first) {
            first = Preview{image, candidate.pixels};
        }
    }
    return first;
}

std::optional<QImage> PreviewFinder::thumbnail(QByteArrayView exif, QSize size)
{
    const auto tiff = TiffStructure::parse(exif);
    const auto isOfSize = [size](const TiffDirectory& directory) {
        return directory.number(kPixelXDimension) == static_cast<quint64>(size.width()) &&
               directory.number(kPixelYDimension) == static_cast<quint64>(size.height());
    };
    if (!tiff || std::ranges::none_of(tiff->directories(), isOfSize)) {
        return std::nullopt;
    }
    for (const Candidate& candidate : ofDirectories(exif)) {
        QImage image = imageOf(candidate);
        if (!image.isNull()) {
            return image;
        }
    }
    return std::nullopt;
}
