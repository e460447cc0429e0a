#pragma once

#include <QByteArray>
#include <QList>
#include <QtEndian>

#include <map>

/// Reads directories of little-endian TIFF files, apart from the code under test. What is out of
/// range reads as nothing.
class TiffReader final
{
public:
    struct Entry {
        quint16 type{0};
        quint32 count{0};
        qint64 position{0}; ///< of the value
    };

    using Directory = std::map<quint16, Entry>;

    explicit TiffReader(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
    }

    [[nodiscard]] bool hasHeader() const { return m_bytes.startsWith(QByteArray("II*\0", 4)); }

    [[nodiscard]] Directory first() const { return directory(number<quint32>(4)); }

    [[nodiscard]] Directory directory(qint64 offset) const
    {
        Directory entries;
        const int count = number<quint16>(offset);
        for (int i = 0; i < count; ++i) {
            const qint64 start = offset + 2 + qint64{12} * i;
            Entry entry{number<quint16>(start + 2), number<quint32>(start + 4), start + 8};
            if (entry.count * sizeOf(entry.type) > 4) {
                entry.position = number<quint32>(start + 8);
            }
            entries.emplace(number<quint16>(start), entry);
        }
        return entries;
    }

    [[nodiscard]] quint32 value(const Entry& entry, int index = 0) const
    {
        switch (sizeOf(entry.type)) {
        case 1:
            return number<quint8>(entry.position + index);
        case 2:
            return number<quint16>(entry.position + qint64{2} * index);
        default:
            return number<quint32>(entry.position + qint64{4} * index);
        }
    }

    [[nodiscard]] QByteArray bytes(qint64 offset, qint64 length) const
    {
        return m_bytes.mid(offset, length);
    }

    /// Bytes of one value of a field type (TIFF 6.0, section 2).
    [[nodiscard]] static quint32 sizeOf(quint16 type)
    {
        switch (type) {
        case 1:
        case 2:
        case 7:
            return 1;
        case 3:
            return 2;
        case 5:
        case 10:
            return 8;
        default:
            return 4;
        }
    }

private:
    template <typename Number>
    [[nodiscard]] Number number(qint64 offset) const
    {
        const auto length = static_cast<qint64>(sizeof(Number));
        if (offset < 0 || offset + length > m_bytes.size()) {
            return 0;
        }
        return qFromLittleEndian<Number>(m_bytes.constData() + offset);
    }

    QByteArray m_bytes;
};
