#include "PictureStructure.h"

#include <algorithm>
#include <cstdlib>

namespace
{

using Complaint = std::optional<QString>;

constexpr quint64 kBitsOfByte = 8;

QString endsEarly()
{
    return QStringLiteral("it ends before its picture does");
}

Complaint endingAt(const FileBytes& file, quint64 end)
{
    return end > file.size() ? Complaint(file.shortOf(end)) : std::nullopt;
}

/// PNG (ISO/IEC 15948, 5.3): chunks up to IEND.
Complaint pngComplaint(const FileBytes& file)
{
    quint64 offset = 8;
    while (file.holds(offset, 12)) {
        const quint64 length = quint64{file.big<quint32>(offset)} + 12;
        if (!file.holds(offset, length)) {
            return file.shortOf(offset + length);
        }
        if (file.has(offset + 4, "IEND")) {
            return std::nullopt;
        }
        offset += length;
    }
    return endsEarly();
}

/// BMP, its "core", "info" and later headers: rows of whole 32-bit words from the offset at byte 10
/// on; compressed ones state their length.
Complaint bmpComplaint(const FileBytes& file)
{
    constexpr quint32 kCoreHeader = 12;
    constexpr quint64 kWordBits = 32;
    const quint32 header = file.little<quint32>(14);
    if (!file.holds(0, 14 + quint64{std::max(header, kCoreHeader)})) {
        return endsEarly();
    }
    const quint64 start = file.little<quint32>(10);
    const bool isCore = header == kCoreHeader;
    const quint64 width = isCore ? file.little<quint16>(18) : file.little<quint32>(18);
    const quint64 height = isCore ? quint64{file.little<quint16>(20)}
                                  : static_cast<quint64>(std::abs(qint64{file.little<qint32>(22)}));
    const quint64 bits = file.little<quint16>(isCore ? 24 : 28);
    const quint32 compression = isCore ? 0 : file.little<quint32>(30);
    constexpr quint32 kBitFields = 3;
    if (compression != 0 && compression != kBitFields) {
        return endingAt(file, start + file.little<quint32>(34));
    }
    constexpr quint64 kMostBits = 64;
    if (bits > kMostBits) {
        return QStringLiteral("it says that a pixel has %1 bits").arg(bits);
    }
    const quint64 row = (width * bits + kWordBits - 1) / kWordBits * (kWordBits / kBitsOfByte);
    return endingAt(file, start + row * height);
}

/// Past the blocks of data at `offset`, each after its length, the last of length 0.
quint64 afterGifBlocks(const FileBytes& file, quint64 offset)
{
    while (file.little<quint8>(offset) != 0) {
        offset += quint64{1} + file.little<quint8>(offset);
    }
    return offset + 1;
}

/// Bytes of the table of colours that a GIF's packed field tells of.
quint64 gifColors(quint8 packed)
{
    constexpr quint8 kHasTable = 0x80;
    constexpr quint8 kSize = 0x07;
    return (packed & kHasTable) == 0 ? 0 : quint64{3} << ((packed & kSize) + 1U);
}

/// GIF (version 89a, 17 to 27): blocks up to the trailer.
Complaint gifComplaint(const FileBytes& file)
{
    constexpr quint8 kExtension = 0x21;
    constexpr quint8 kImage = 0x2C;
    constexpr quint8 kTrailer = 0x3B;
    quint64 offset = 13 + gifColors(file.little<quint8>(10));
    while (file.holds(offset, 1)) {
        const auto kind = file.little<quint8>(offset);
        if (kind == kTrailer) {
            return std::nullopt;
        }
        if (kind == kExtension) {
            offset = afterGifBlocks(file, offset + 2);
        } else if (kind == kImage) {
            const quint64 colors = gifColors(file.little<quint8>(offset + 9));
            offset = afterGifBlocks(file, offset + 10 + colors + 1);
        } else {
            return QStringLiteral("its structure is corrupt at byte %1").arg(offset);
        }
    }
    return endsEarly();
}

/// The end of so many pixels in Truevision's run lengths: a byte that says how many pixels follow,
/// or how often the one that follows stands.
quint64 endOfRuns(const FileBytes& file, quint64 offset, quint64 pixels, quint64 pixelBytes)
{
    constexpr quint8 kRepeats = 0x80;
    while (pixels > 0 && file.holds(offset, 1)) {
        const auto packet = file.little<quint8>(offset);
        const quint64 count = (packet & ~kRepeats & 0xFFU) + 1U;
        offset += 1 + ((packet & kRepeats) != 0 ? 1 : count) * pixelBytes;
        pixels -= count < pixels ? count : pixels;
    }
    return pixels > 0 ? offset + 1 : offset;
}

/// Truevision TGA (version 2.0): header of 18 bytes, name, table of colours, pixels.
Complaint tgaComplaint(const FileBytes& file)
{
    constexpr quint64 kHeader = 18;
    constexpr quint8 kRunLengths = 0x08;
    if (!file.holds(0, kHeader)) {
        return endsEarly();
    }
    const quint64 pixelBytes = (file.little<quint8>(16) + kBitsOfByte - 1) / kBitsOfByte;
    const quint64 pixels = quint64{file.little<quint16>(12)} * file.little<quint16>(14);
    const quint64 colorBytes = (file.little<quint8>(7) + kBitsOfByte - 1) / kBitsOfByte;
    const quint64 colors = file.little<quint8>(1) == 0 ? 0 : file.little<quint16>(5) * colorBytes;
    const quint64 start = kHeader + file.little<quint8>(0) + colors;
    const bool hasRuns = (file.little<quint8>(2) & kRunLengths) != 0;
    return endingAt(
        file, hasRuns ? endOfRuns(file, start, pixels, pixelBytes) : start + pixels * pixelBytes);
}

} // namespace

std::optional<QString> PictureStructure::complaint(const FileBytes& file)
{
    if (file.has(1, "PNG")) {
        return pngComplaint(file);
    }
    if (file.has(0, "RIFF")) {
        return endingAt(file, quint64{file.little<quint32>(4)} + 8);
    }
    if (file.has(0, "BM")) {
        return bmpComplaint(file);
    }
    return file.has(0, "GIF8") ? gifComplaint(file) : tgaComplaint(file);
}
