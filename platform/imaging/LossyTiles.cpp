#include "LossyTiles.h"

#include "FileBytes.h"
#include "JpegDecoder.h"
#include "TiffStructure.h"

#include <QSet>

namespace
{

// DNG 1.4, chapter 4.
constexpr quint16 kCompression = 0x0103;
constexpr quint64 kLossyJpeg = 34892;

/// The least work; all data are read and judged nevertheless.
constexpr int kReduction = 8;

} // namespace

std::optional<Error> LossyTiles::failure(QByteArrayView file)
{
    const auto tiff = TiffStructure::parse(file);
    const TiffDirectory* const raw = tiff ? tiff->rawDirectory() : nullptr;
    if (raw == nullptr || raw->number(kCompression) != kLossyJpeg) {
        return std::nullopt;
    }
    QSet<quint64> judged;
    auto bytesLeft = static_cast<quint64>(file.size());
    for (const ByteRange& tile : raw->pictureRanges()) {
        if (judged.contains(tile.offset)) {
            continue;
        }
        // Tiles that a program wrote share no bytes; this bounds the work for a hostile file.
        if (tile.length > bytesLeft || !FileBytes(file).holds(tile.offset, tile.length)) {
            return Error{ErrorCode::Damaged, QStringLiteral("its picture data are corrupt")};
        }
        judged.insert(tile.offset);
        bytesLeft -= tile.length;
        const auto picture = JpegDecoder::decodeReduced(
            file.sliced(static_cast<qsizetype>(tile.offset), static_cast<qsizetype>(tile.length)),
            kReduction);
        if (!picture.ok()) {
            return picture.error();
        }
    }
    return std::nullopt;
}
