#include "LossyTiles.h"

#include "JpegDecoder.h"
#include "TiffStructure.h"

#include <QList>

#include <algorithm>

namespace
{

// TIFF 6.0, sections 3, 8 and 15, and DNG 1.4, chapter 4.
constexpr quint16 kPictureWidth = 0x0100;
constexpr quint16 kPictureLength = 0x0101;
constexpr quint16 kCompression = 0x0103;
constexpr quint16 kRowsPerStrip = 0x0116;
constexpr quint16 kTileWidth = 0x0142;
constexpr quint16 kTileLength = 0x0143;
constexpr quint64 kLossyJpeg = 34892;

/// By how much a side of a tile may be longer than that of its picture, in pixels; cameras' tiles
/// have sides of 256 to 512.
constexpr quint64 kMostFilledUp = 1024;

/// The least work; all data are read and judged nevertheless.
constexpr int kReduction = 8;

/// How the picture lies in its strips or tiles.
struct TileLayout {
    quint64 count{0}; ///< those that the picture needs
    quint64 width{0}; ///< of the largest that one may be, in pixels
    quint64 height{0};
};

/// What is not stated is one of the picture's size, as LibRaw takes it.
TileLayout layoutOf(const TiffDirectory& raw)
{
    const auto stated = [&](quint16 tag, quint64 otherwise) {
        const quint64 number = raw.number(tag);
        return number > 0 ? number : otherwise;
    };
    const quint64 width = raw.number(kPictureWidth);
    const quint64 length = raw.number(kPictureLength);
    const quint64 across = stated(kTileWidth, width);
    // Strips end with the picture, tiles are filled up.
    const quint64 down = stated(kTileLength, std::min(stated(kRowsPerStrip, length), length));
    return {((width - 1) / across + 1) * ((length - 1) / down + 1),
            std::min(across, width + kMostFilledUp),
            std::min(down, length + kMostFilledUp)};
}

/// The `count` first ones that are stated, each from its begin to that of the next one, or to the
/// end of the file: LibRaw reads a tile to its end mark, whatever length is stated. No byte belongs
/// to two, which bounds the work. One that begins beyond the end is empty.
QList<QByteArrayView> tilesOf(const TiffDirectory& raw, QByteArrayView file, quint64 count)
{
    QList<quint64> offsets = raw.pictureOffsets();
    offsets.resize(static_cast<qsizetype>(std::min(count, static_cast<quint64>(offsets.size()))));
    std::ranges::sort(offsets);
    offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());
    const auto placeOf = [&](qsizetype tile) {
        const auto end = static_cast<quint64>(file.size());
        return static_cast<qsizetype>(tile < offsets.size() ? std::min(offsets[tile], end) : end);
    };
    QList<QByteArrayView> tiles;
    for (qsizetype tile = 0; tile < offsets.size(); ++tile) {
        tiles.append(file.sliced(placeOf(tile), placeOf(tile + 1) - placeOf(tile)));
    }
    return tiles;
}

/// What is wrong with one, which may be as large as its place and no larger.
std::optional<Error> failureOf(QByteArrayView tile, const TileLayout& layout)
{
    const QSize size = JpegDecoder::size(tile).value_or(QSize(0, 0));
    if (static_cast<quint64>(size.width()) > layout.width ||
        static_cast<quint64>(size.height()) > layout.height) {
        return Error{ErrorCode::Damaged,
                     QStringLiteral("a tile of its picture says that it is larger than its place")};
    }
    const auto picture = JpegDecoder::decodeReduced(tile, kReduction);
    return picture.ok() ? std::nullopt : std::optional(picture.error());
}

} // namespace

std::optional<Error> LossyTiles::failure(QByteArrayView file)
{
    const auto tiff = TiffStructure::parse(file);
    const TiffDirectory* const raw = tiff ? tiff->rawDirectory() : nullptr;
    if (raw == nullptr || raw->number(kCompression) != kLossyJpeg) {
        return std::nullopt;
    }
    const TileLayout layout = layoutOf(*raw);
    for (const QByteArrayView tile : tilesOf(*raw, file, layout.count)) {
        if (auto failure = failureOf(tile, layout)) {
            return failure;
        }
    }
    return std::nullopt;
}
