#include "TiffStructure.h"

#include <QSet>
#include <QtEndian>

#include <algorithm>
#include <array>

namespace
{

// Tags of TIFF 6.0, TIFF/EP and DNG 1.4, chapter 4.
constexpr quint16 kImageWidth = 0x0100;
constexpr quint16 kImageLength = 0x0101;
constexpr quint16 kPhotometric = 0x0106;
constexpr quint16 kStripOffsets = 0x0111;
constexpr quint16 kStripByteCounts = 0x0117;
constexpr quint16 kTileOffsets = 0x0144;
constexpr quint16 kTileByteCounts = 0x0145;
constexpr quint16 kSubDirectories = 0x014A;
constexpr quint16 kJpegOffset = 0x0201;
constexpr quint16 kJpegLength = 0x0202;
constexpr quint16 kXmp = 0x02BC;
constexpr quint16 kExifDirectory = 0x8769;
constexpr quint16 kDngVersion = 0xC612;

constexpr quint64 kColorFilterArray = 32803;
constexpr quint64 kLinearRaw = 34892;

/// Bounds against crafted files; real ones have a dozen directories of about a hundred entries.
constexpr qsizetype kMaximumDirectories = 64;
constexpr quint64 kMaximumValues = 65536;
constexpr int kEntryBytes = 12;

/// Entries without which the picture cannot be found.
constexpr std::array kStructural{
    kStripOffsets, kStripByteCounts, kTileOffsets, kTileByteCounts, kSubDirectories};

/// Bytes of one value by TIFF type number.
constexpr std::array<quint64, 14> kTypeBytes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};

/// XMP is bytes to its readers, whatever type is stated; those of BigTIFF have 8 a value.
constexpr quint64 bytesOfXmpValue(quint16 type)
{
    const bool isBig = type >= 16 && type <= 18;
    return isBig ? 8 : std::max<quint64>(1, type < kTypeBytes.size() ? kTypeBytes.at(type) : 1);
}

} // namespace

/// Walks the directories of one file.
class TiffStructure::Reader final
{
public:
    Reader(QByteArrayView bytes, bool bigEndian)
        : m_bytes(bytes)
        , m_bigEndian(bigEndian)
        , m_valuesLeft(static_cast<quint64>(bytes.size()))
    {
    }

    [[nodiscard]] bool holds(quint64 offset, quint64 length) const
    {
        const auto size = static_cast<quint64>(m_bytes.size());
        return offset <= size && length <= size - offset;
    }

    template <typename Number>
    [[nodiscard]] Number at(quint64 offset) const
    {
        const char* const data = m_bytes.data() + offset;
        return m_bigEndian ? qFromBigEndian<Number>(data) : qFromLittleEndian<Number>(data);
    }

    void walk(quint64 first, TiffStructure& into);

private:
    template <typename Number>
    void appendNumbers(quint64 offset, quint64 count, QList<quint64>& into) const
    {
        for (quint64 i = 0; i < count; ++i) {
            into.append(at<Number>(offset + sizeof(Number) * i));
        }
    }

    void readDirectory(quint64 offset, TiffStructure& into);
    void readEntry(quint64 offset, TiffDirectory& directory, TiffStructure& into);
    void readXmp(quint64 entry, quint64 length, TiffDirectory& directory) const;
    void readValues(
        quint16 type, quint64 offset, quint64 count, quint16 tag, TiffDirectory& directory) const;

    QByteArrayView m_bytes;
    bool m_bigEndian;
    /// Entries of a file that a program wrote do not share their values, so there are no more of
    /// them than bytes; this keeps a hostile file from being read into many times its size.
    quint64 m_valuesLeft;
    QList<quint64> m_waiting;
    QSet<quint64> m_seen;
};

void TiffStructure::Reader::walk(quint64 first, TiffStructure& into)
{
    m_waiting.append(first);
    while (!m_waiting.isEmpty() && into.m_directories.size() < kMaximumDirectories) {
        const quint64 offset = m_waiting.takeFirst();
        if (offset != 0 && !m_seen.contains(offset)) {
            m_seen.insert(offset);
            readDirectory(offset, into);
        }
    }
}

void TiffStructure::Reader::readDirectory(quint64 offset, TiffStructure& into)
{
    if (!holds(offset, 2)) {
        into.m_beyondEnd = true;
        return;
    }
    quint64 count = at<quint16>(offset);
    const quint64 entries = offset + 2;
    if (!holds(entries, count * kEntryBytes)) {
        // Exiv2 reads those that are there.
        into.m_beyondEnd = true;
        count = (static_cast<quint64>(m_bytes.size()) - entries) / kEntryBytes;
    }
    TiffDirectory directory;
    for (quint64 i = 0; i < count; ++i) {
        readEntry(entries + i * kEntryBytes, directory, into);
    }
    m_waiting.append(directory.numbers.value(kSubDirectories));
    m_waiting.append(directory.numbers.value(kExifDirectory));
    into.m_directories.append(directory);
    const quint64 next = entries + count * kEntryBytes;
    if (holds(next, 4)) {
        m_waiting.append(at<quint32>(next));
    }
}

void TiffStructure::Reader::readEntry(quint64 offset, TiffDirectory& directory, TiffStructure& into)
{
    const auto tag = at<quint16>(offset);
    const auto type = at<quint16>(offset + 2);
    const quint64 count = at<quint32>(offset + 4);
    if (tag == kXmp) {
        readXmp(offset, bytesOfXmpValue(type) * count, directory);
        return;
    }
    if (type == 0 || type >= kTypeBytes.size() || count == 0) {
        return;
    }
    const quint64 length = kTypeBytes.at(type) * count;
    const quint64 values = length <= 4 ? offset + 8 : at<quint32>(offset + 8);
    if (!holds(values, length)) {
        // Cameras and editors leave dead entries of other kinds behind.
        into.m_beyondEnd =
            into.m_beyondEnd || std::ranges::find(kStructural, tag) != kStructural.end();
        return;
    }
    if (count <= kMaximumValues && count <= m_valuesLeft) {
        m_valuesLeft -= count;
        readValues(type, values, count, tag, directory);
    }
}

void TiffStructure::Reader::readXmp(quint64 entry, quint64 length, TiffDirectory& directory) const
{
    const quint64 packet = length <= 4 ? entry + 8 : at<quint32>(entry + 8);
    if (length > 0 && holds(packet, length)) {
        directory.xmp.append({{packet, length}, entry});
    }
}

void TiffStructure::Reader::readValues(
    quint16 type, quint64 offset, quint64 count, quint16 tag, TiffDirectory& directory) const
{
    switch (type) {
    case 1: // BYTE
        appendNumbers<quint8>(offset, count, directory.numbers[tag]);
        break;
    case 3: // SHORT
        appendNumbers<quint16>(offset, count, directory.numbers[tag]);
        break;
    case 4:  // LONG
    case 13: // IFD
        appendNumbers<quint32>(offset, count, directory.numbers[tag]);
        break;
    case 5: { // RATIONAL
        QList<double>& rationals = directory.rationals[tag];
        for (quint64 i = 0; i < count; ++i) {
            const double below = at<quint32>(offset + 8 * i + 4);
            rationals.append(below > 0 ? at<quint32>(offset + 8 * i) / below : 0.0);
        }
        break;
    }
    default:
        break;
    }
}

quint64 TiffDirectory::number(quint16 tag, quint64 otherwise) const
{
    const auto found = numbers.constFind(tag);
    return found == numbers.constEnd() ? otherwise : found->first();
}

QList<double> TiffDirectory::values(quint16 tag) const
{
    QList<double> result = rationals.value(tag);
    for (const quint64 value : numbers.value(tag)) {
        result.append(static_cast<double>(value));
    }
    return result;
}

QList<ByteRange> TiffDirectory::pictureRanges() const
{
    QList<ByteRange> ranges;
    const auto add = [&](quint16 offsetTag, quint16 lengthTag) {
        const auto offsets = numbers.value(offsetTag);
        const auto lengths = numbers.value(lengthTag);
        for (qsizetype i = 0; i < std::min(offsets.size(), lengths.size()); ++i) {
            ranges.append({offsets[i], lengths[i]});
        }
    };
    add(kStripOffsets, kStripByteCounts);
    add(kTileOffsets, kTileByteCounts);
    add(kJpegOffset, kJpegLength);
    return ranges;
}

QList<quint64> TiffDirectory::pictureOffsets() const
{
    const QList<quint64> tiles = numbers.value(kTileOffsets);
    return tiles.isEmpty() ? numbers.value(kStripOffsets) : tiles;
}

bool TiffDirectory::isRaw() const
{
    const quint64 photometric = number(kPhotometric);
    return photometric == kColorFilterArray || photometric == kLinearRaw;
}

std::optional<TiffStructure> TiffStructure::parse(QByteArrayView bytes)
{
    if (bytes.size() < 8 || (bytes[0] != 'I' && bytes[0] != 'M') || bytes[1] != bytes[0]) {
        return std::nullopt;
    }
    const Reader probe(bytes, bytes[0] == 'M');
    // 42 for TIFF; Panasonic and Olympus have their own numbers.
    static constexpr std::array<quint16, 4> kMarks{42, 0x0055, 0x4F52, 0x5352};
    if (std::ranges::find(kMarks, probe.at<quint16>(2)) == kMarks.end()) {
        return std::nullopt;
    }
    TiffStructure structure;
    Reader reader = probe;
    reader.walk(probe.at<quint32>(4), structure);
    if (structure.m_directories.isEmpty() && !structure.m_beyondEnd) {
        return std::nullopt;
    }
    return structure;
}

bool TiffStructure::statesRaw() const
{
    return std::ranges::any_of(m_directories, [](const TiffDirectory& directory) {
        return directory.isRaw() || directory.numbers.contains(kDngVersion);
    });
}

const TiffDirectory* TiffStructure::rawDirectory() const
{
    const TiffDirectory* largest = nullptr;
    quint64 pixels = 0;
    for (const TiffDirectory& directory : m_directories) {
        const quint64 size = directory.number(kImageWidth) * directory.number(kImageLength);
        if (directory.isRaw() && size > pixels) {
            largest = &directory;
            pixels = size;
        }
    }
    return largest;
}
