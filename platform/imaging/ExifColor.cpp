#include "ExifColor.h"

#include <QtEndian>

#include <optional>

namespace
{

constexpr quint16 kExifDirectory = 0x8769;
constexpr quint16 kInteropDirectory = 0xA005;
constexpr quint16 kColorSpace = 0xA001;
constexpr quint16 kInteropIndex = 0x0001;

constexpr quint16 kAscii = 2;
constexpr quint16 kShort = 3;
constexpr quint16 kLong = 4;

constexpr quint16 kUncalibrated = 0xFFFF;
constexpr qsizetype kEntryBytes = 12;

/// The entries of a TIFF structure whose values stand in the entries themselves.
class Entries final
{
public:
    explicit Entries(QByteArrayView bytes)
        : m_bytes(bytes)
        , m_bigEndian(bytes.startsWith("MM"))
    {
    }

    [[nodiscard]] qint64 firstDirectory() const { return number<quint32>(4).value_or(0); }

    /// Where the value of the entry stands; nothing where there is no such entry of that type.
    [[nodiscard]] std::optional<qint64> value(qint64 directory, quint16 tag, quint16 type) const
    {
        const qint64 count = number<quint16>(directory).value_or(0);
        for (qint64 index = 0; index < count; ++index) {
            const qint64 entry = directory + 2 + index * kEntryBytes;
            if (number<quint16>(entry) == tag && number<quint16>(entry + 2) == type) {
                return entry + 8;
            }
        }
        return std::nullopt;
    }

    template <typename Number>
    [[nodiscard]] std::optional<Number> number(qint64 offset) const
    {
        if (offset < 0 || offset > m_bytes.size() - qint64{sizeof(Number)}) {
            return std::nullopt;
        }
        const char* const data = m_bytes.data() + offset;
        return m_bigEndian ? qFromBigEndian<Number>(data) : qFromLittleEndian<Number>(data);
    }

    [[nodiscard]] bool has(qint64 offset, QByteArrayView text) const
    {
        return offset >= 0 && offset <= m_bytes.size() - text.size() &&
               m_bytes.sliced(offset, text.size()) == text;
    }

    /// The directory that an entry points to.
    [[nodiscard]] std::optional<qint64> pointed(qint64 directory, quint16 tag) const
    {
        const auto place = value(directory, tag, kLong);
        const auto offset = place ? number<quint32>(*place) : std::nullopt;
        return offset ? std::optional<qint64>(*offset) : std::nullopt;
    }

private:
    QByteArrayView m_bytes;
    bool m_bigEndian;
};

} // namespace

bool ExifColor::isAdobeRgb(QByteArrayView exif)
{
    if (!exif.startsWith(QByteArrayView("II*\0", 4)) &&
        !exif.startsWith(QByteArrayView("MM\0*", 4))) {
        return false;
    }
    const Entries entries(exif);
    const auto photo = entries.pointed(entries.firstDirectory(), kExifDirectory);
    const auto interop = photo ? entries.pointed(*photo, kInteropDirectory) : std::nullopt;
    if (!interop) {
        return false;
    }
    const auto space = entries.value(*photo, kColorSpace, kShort);
    const auto index = entries.value(*interop, kInteropIndex, kAscii);
    return space && index && entries.number<quint16>(*space) == kUncalibrated &&
           entries.has(*index, "R03");
}
