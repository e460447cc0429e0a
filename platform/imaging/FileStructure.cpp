#include "FileStructure.h"

#include "FileBytes.h"
#include "PictureStructure.h"
#include "TiffStructure.h"

#include <algorithm>

namespace
{

using Complaint = std::optional<QString>;

/// Panasonic's own tags: size of the sensor, kind of compression, where the data begin.
constexpr quint16 kPanasonicWidth = 0x0002;
constexpr quint16 kPanasonicHeight = 0x0003;
constexpr quint16 kPanasonicFormat = 0x002D;
constexpr quint16 kPanasonicOffset = 0x0118;

/// Up to this format a Panasonic pixel takes at least a byte; format 4 packs 14 into 16 bytes.
constexpr quint64 kPanasonicLastFixed = 7;

/// More than any picture has, so that what is computed of it fits in 64 bits.
constexpr quint64 kMostPixels = quint64{1} << 40U;

/// What stands where an offset is kept in another tag.
constexpr quint64 kNoOffset = 0xFFFFFFFF;

Complaint tiffComplaint(const FileBytes& file, const TiffStructure& tiff)
{
    if (tiff.leadsBeyondEnd()) {
        return QStringLiteral("its table of contents leads beyond its end; the file is not whole");
    }
    quint64 end = 0;
    for (const TiffDirectory& directory : tiff.directories()) {
        for (const ByteRange& range : directory.pictureRanges()) {
            if (range.offset != kNoOffset) {
                end = std::max(end, range.offset + range.length);
            }
        }
    }
    return end > file.size() ? Complaint(file.shortOf(end)) : std::nullopt;
}

Complaint panasonicComplaint(const FileBytes& file, const TiffStructure& tiff)
{
    if (tiff.directories().isEmpty()) {
        return std::nullopt;
    }
    const TiffDirectory& main = tiff.directories().first();
    const quint64 format = main.number(kPanasonicFormat);
    const quint64 pixels =
        std::min(main.number(kPanasonicWidth) * main.number(kPanasonicHeight), kMostPixels);
    const quint64 offset = main.number(kPanasonicOffset);
    if (offset == 0 || format > kPanasonicLastFixed) {
        return std::nullopt;
    }
    const quint64 end = offset + (format == 4 ? pixels / 14 * 16 : pixels);
    return end > file.size() ? Complaint(file.shortOf(end)) : std::nullopt;
}

/// ISO/IEC 14496-12, 4.2: boxes that follow each other to the end of the file.
Complaint boxComplaint(const FileBytes& file)
{
    quint64 offset = 0;
    while (file.holds(offset, 8)) {
        quint64 length = file.big<quint32>(offset);
        if (length == 1) {
            length = file.big<quint64>(offset + 8);
        } else if (length == 0) {
            return std::nullopt;
        }
        if (length < 8) {
            return QStringLiteral("its structure is corrupt at byte %1").arg(offset);
        }
        if (!file.holds(offset, length)) {
            return file.shortOf(offset + length);
        }
        offset += length;
    }
    return std::nullopt;
}

/// The header of Fujifilm's RAW files: offset and length of the preview, of the tables and of the
/// sensor's data, from byte 84 on.
Complaint fujiComplaint(const FileBytes& file)
{
    for (quint64 entry = 84; entry <= 100; entry += 8) {
        const quint64 end = quint64{file.big<quint32>(entry)} + file.big<quint32>(entry + 4);
        if (!file.holds(0, 108) || end > file.size()) {
            return file.shortOf(std::max<quint64>(end, 108));
        }
    }
    return std::nullopt;
}

/// Canon's CRW is a heap whose directory stands at its end (the last four bytes say where).
Complaint heapComplaint(const FileBytes& file)
{
    const quint64 start = file.little<quint32>(2);
    if (!file.holds(start, 6)) {
        return QStringLiteral("its structure is corrupt at byte 2");
    }
    const quint64 table = start + file.little<quint32>(file.size() - 4);
    const quint64 count = file.little<quint16>(table);
    if (count == 0 || !file.holds(table, 2 + count * 10 + 4)) {
        return QStringLiteral(
            "its table of contents is not where its end says; the file is not whole");
    }
    for (quint64 entry = table + 2; entry < table + 2 + count * 10; entry += 10) {
        // The two highest bits of the type say where the value is: 1 for in the entry itself.
        const bool inEntry = (file.little<quint16>(entry) & 0xC000U) == 0x4000U;
        const quint64 end =
            start + file.little<quint32>(entry + 2) + file.little<quint32>(entry + 6);
        if (!inEntry && end > file.size()) {
            return QStringLiteral(
                "its table of contents leads beyond its end; the file is not whole");
        }
    }
    return std::nullopt;
}

/// Sigma's X3F: the last four bytes say where the directory is.
Complaint foveonComplaint(const FileBytes& file)
{
    const quint64 table = file.little<quint32>(file.size() - 4);
    if (file.has(table, "SECd")) {
        return std::nullopt;
    }
    return QStringLiteral("its table of contents is not where its end says; the file is not whole");
}

} // namespace

std::optional<QString> FileStructure::complaint(const QByteArray& bytes, FileType type)
{
    const FileBytes file(bytes);
    if (bytes.isEmpty()) {
        return QStringLiteral("it is empty");
    }
    if (file.has(4, "ftyp")) {
        return boxComplaint(file);
    }
    if (file.has(0, "FUJIFILMCCD-RAW")) {
        return fujiComplaint(file);
    }
    if (file.has(6, "HEAPCCDR")) {
        return heapComplaint(file);
    }
    if (file.has(0, "FOVb")) {
        return foveonComplaint(file);
    }
    if (const auto tiff = TiffStructure::parse(bytes)) {
        const Complaint own = file.has(0, QByteArrayView("IIU\0", 4))
                                  ? panasonicComplaint(file, *tiff)
                                  : std::nullopt;
        return own ? own : tiffComplaint(file, *tiff);
    }
    return type == FileType::Picture ? PictureStructure::complaint(file) : std::nullopt;
}
