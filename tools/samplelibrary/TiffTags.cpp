#include "TiffTags.h"

#include <QtEndian>

#include <utility>

namespace
{

// The field types of TIFF 6.0, section 2.
constexpr quint16 kByte = 1;
constexpr quint16 kAscii = 2;
constexpr quint16 kShort = 3;
constexpr quint16 kLong = 4;
constexpr quint16 kRational = 5;
constexpr quint16 kUndefined = 7;
constexpr quint16 kSignedRational = 10;

constexpr qint64 kEntryLength = 12;
constexpr qsizetype kInlineLength = 4;

template <typename Number>
void append(QByteArray& bytes, Number number)
{
    char buffer[sizeof(Number)];
    qToLittleEndian(number, buffer);
    bytes.append(buffer, sizeof(Number));
}

/// Values start at even offsets.
constexpr qint64 even(qint64 length)
{
    return length + length % 2;
}

constexpr qint64 tableLength(size_t entries)
{
    return 2 + static_cast<qint64>(entries) * kEntryLength + 4;
}

} // namespace

void TiffTags::set(quint16 tag, quint16 type, qsizetype count, const QByteArray& data)
{
    m_entries.insert_or_assign(tag, Entry{type, static_cast<quint32>(count), data});
}

void TiffTags::setAscii(quint16 tag, const QByteArray& text)
{
    set(tag, kAscii, text.size() + 1, text + '\0');
}

void TiffTags::setBytes(quint16 tag, const QByteArray& bytes)
{
    set(tag, kByte, bytes.size(), bytes);
}

void TiffTags::setUndefined(quint16 tag, const QByteArray& bytes)
{
    set(tag, kUndefined, bytes.size(), bytes);
}

void TiffTags::setShorts(quint16 tag, const QList<quint16>& values)
{
    QByteArray data;
    for (const quint16 value : values) {
        append(data, value);
    }
    set(tag, kShort, values.size(), data);
}

void TiffTags::setLongs(quint16 tag, const QList<quint32>& values)
{
    QByteArray data;
    for (const quint32 value : values) {
        append(data, value);
    }
    set(tag, kLong, values.size(), data);
}

void TiffTags::setRationals(quint16 tag, const QList<Rational>& values)
{
    QByteArray data;
    for (const Rational& value : values) {
        append(data, value.numerator);
        append(data, value.denominator);
    }
    set(tag, kRational, values.size(), data);
}

void TiffTags::setSignedRationals(quint16 tag, const QList<SignedRational>& values)
{
    QByteArray data;
    for (const SignedRational& value : values) {
        append(data, value.numerator);
        append(data, value.denominator);
    }
    set(tag, kSignedRational, values.size(), data);
}

void TiffTags::addDirectory(quint16 tag, TiffTags directory)
{
    setLongs(tag, {0});
    m_directoryTags.push_back(tag);
    m_directories.push_back(std::move(directory));
}

qint64 TiffTags::length() const
{
    qint64 total = tableLength(m_entries.size());
    for (const auto& [tag, entry] : m_entries) {
        total += entry.data.size() > kInlineLength ? even(entry.data.size()) : 0;
    }
    for (const TiffTags& directory : m_directories) {
        total += directory.length();
    }
    return total;
}

QByteArray TiffTags::serialised(quint32 offset) const
{
    std::map<quint16, Entry> entries = m_entries;
    QByteArray below;
    qint64 belowStart = offset + length();
    for (const TiffTags& directory : m_directories) {
        belowStart -= directory.length();
    }
    for (size_t i = 0; i < m_directories.size(); ++i) {
        const auto start = static_cast<quint32>(belowStart + below.size());
        Entry& pointer = entries[m_directoryTags[i]];
        pointer.data.clear();
        append(pointer.data, start);
        below += m_directories[i].serialised(start);
    }

    QByteArray table;
    QByteArray values;
    append(table, static_cast<quint16>(entries.size()));
    const qint64 valuesStart = offset + tableLength(entries.size());
    for (const auto& [tag, entry] : entries) {
        append(table, tag);
        append(table, entry.type);
        append(table, entry.count);
        if (entry.data.size() <= kInlineLength) {
            table += entry.data.leftJustified(kInlineLength, '\0');
            continue;
        }
        append(table, static_cast<quint32>(valuesStart + values.size()));
        values += entry.data;
        values.append(values.size() % 2, '\0');
    }
    append(table, quint32{0}); // no further directory in the chain
    return table + values + below;
}

QByteArray TiffTags::file() const
{
    QByteArray header("II*\0", 4);
    append(header, kHeaderLength);
    return header + serialised(kHeaderLength);
}
