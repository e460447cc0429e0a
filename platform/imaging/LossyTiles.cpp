#include "LossyTiles.h"

#include "JpegDecoder.h"
#include "TiffStructure.h"

#include <QList>

#include <algorithm>

namespace
{

// DNG 1.4, chapter 4.
constexpr quint16 kCompression = 0x0103;
constexpr quint64 kLossyJpeg = 34892;

/// The least work; all data are read and judged nevertheless.
constexpr int kReduction = 8;

/// Each from its begin to that of the next one, or to the end of the file: LibRaw reads a tile to
/// its end mark, whatever length is stated. No byte belongs to two, which bounds the work. One that
/// begins beyond the end is empty.
QList<QByteArrayView> tilesOf(const TiffDirectory& raw, QByteArrayView file)
{
    QList<quint64> offsets = raw.pictureOffsets();
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

} // namespace

std::optional<Error> LossyTiles::failure(QByteArrayView file)
{
    const auto tiff = TiffStructure::parse(file);
    const TiffDirectory* const raw = tiff ? tiff->rawDirectory() : nullptr;
    if (raw == nullptr || raw->number(kCompression) != kLossyJpeg) {
        return std::nullopt;
    }
    for (const QByteArrayView tile : tilesOf(*raw, file)) {
        const auto picture = JpegDecoder::decodeReduced(tile, kReduction);
        if (!picture.ok()) {
            return picture.error();
        }
    }
    return std::nullopt;
}
