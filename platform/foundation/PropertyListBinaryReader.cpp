#include "PropertyListForms.h"

#include <QtEndian>

#include <bit>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

using namespace PropertyListForms;

/// "bplist00" before the objects, a trailer of 32 bytes behind the offset table.
constexpr quint64 kHeaderSize = 8;
constexpr quint64 kTrailerSize = 32;

Error damaged(const QString& what)
{
    return Error{ErrorCode::Damaged, u"the property list is damaged: %1"_s.arg(what)};
}

/// A run of bytes inside the file.
struct Span {
    quint64 offset{0};
    quint64 size{0};
};

/// One object's kind (the upper four bits of its marker) and the number in the lower four.
struct Marker {
    int kind{0};
    quint64 number{0};
    quint64 content{0}; ///< offset of what follows the marker and, if there is one, the count
};

/// Reads one binary property list. Objects are read once each, also when many containers refer to
/// them; the values they unfold to are counted all the same.
class BinaryReader final
{
public:
    explicit BinaryReader(const QByteArray& bytes)
        : m_bytes(bytes)
    {
    }

    [[nodiscard]] Result<QVariant> read()
    {
        if (!readTrailer()) {
            return damaged(m_problem);
        }
        if (!readObject(m_rootIndex, 0)) {
            return damaged(m_problem);
        }
        return m_objects[m_rootIndex].value;
    }

private:
    enum class State : quint8 { Unread, BeingRead, Read };

    struct Object {
        QVariant value;
        quint64 unfolded{1}; ///< how many values it stands for, itself included
        int height{1};       ///< levels of containers below and including it
        State state{State::Unread};
    };

    bool fail(const QString& problem)
    {
        if (m_problem.isEmpty()) {
            m_problem = problem;
        }
        return false;
    }

    [[nodiscard]] bool contains(Span span) const
    {
        // Objects lie between header and offset table.
        return span.offset >= kHeaderSize && span.offset <= m_tableOffset &&
               span.size <= m_tableOffset - span.offset;
    }

    /// As contains(), for what an object of any size holds. Objects do not overlap in a file that a
    /// program wrote, so all of them together are no larger than it; this keeps a hostile file from
    /// being read into many times its size.
    bool claim(Span span)
    {
        if (!contains(span)) {
            return false;
        }
        m_claimed += span.size;
        return m_claimed <= m_tableOffset;
    }

    [[nodiscard]] quint64 unsignedAt(Span span) const
    {
        quint64 number = 0;
        for (quint64 index = 0; index < span.size; ++index) {
            const auto byte = static_cast<quint8>(m_bytes.at(qsizetype(span.offset + index)));
            number = (number << 8U) | byte;
        }
        return number;
    }

    bool readTrailer()
    {
        const auto size = static_cast<quint64>(m_bytes.size());
        if (size < kHeaderSize + kTrailerSize + 1 || !m_bytes.startsWith("bplist0")) {
            return fail(u"it ends early"_s);
        }
        const quint64 trailer = size - kTrailerSize;
        const quint64 offsetSize = unsignedAt({trailer + 6, 1});
        m_referenceSize = unsignedAt({trailer + 7, 1});
        const quint64 count = unsignedAt({trailer + 8, 8});
        m_rootIndex = unsignedAt({trailer + 16, 8});
        m_tableOffset = unsignedAt({trailer + 24, 8});
        const auto isWidth = [](quint64 width) { return width >= 1 && width <= 8; };
        if (!isWidth(offsetSize) || !isWidth(m_referenceSize) || m_tableOffset < kHeaderSize ||
            m_tableOffset > trailer || count == 0 ||
            count > (trailer - m_tableOffset) / offsetSize || count > m_tableOffset ||
            m_rootIndex >= count) {
            return fail(u"its trailer contradicts its size"_s);
        }
        m_offsets.reserve(count);
        for (quint64 index = 0; index < count; ++index) {
            m_offsets.push_back(unsignedAt({m_tableOffset + index * offsetSize, offsetSize}));
        }
        m_objects.resize(count);
        return true;
    }

    bool readMarker(quint64 index, Marker& marker)
    {
        const Span first{m_offsets[index], 1};
        if (!contains(first) || first.offset == m_tableOffset) {
            return fail(u"an object lies outside of it"_s);
        }
        const quint64 byte = unsignedAt(first);
        marker = {int(byte >> 4U), byte & 0xFU, first.offset + 1};
        const bool hasCount = marker.kind >= 0x4 && marker.kind != 0x8;
        if (!hasCount || marker.number != 0xF) {
            return true;
        }
        // A count of 15 and more follows as an integer object of its own.
        const Span countMarker{marker.content, 1};
        if (!contains(countMarker) || countMarker.offset == m_tableOffset) {
            return fail(u"it ends early"_s);
        }
        const quint64 countByte = unsignedAt(countMarker);
        const Span count{marker.content + 1, quint64{1} << (countByte & 0xFU)};
        if ((countByte >> 4U) != 0x1 || count.size > 8 || !contains(count)) {
            return fail(u"a count is no number"_s);
        }
        marker.number = unsignedAt(count);
        marker.content = count.offset + count.size;
        return true;
    }

    bool readObject(quint64 index, int depth)
    {
        if (index >= m_objects.size()) {
            return fail(u"it refers to an object that is not there"_s);
        }
        Object& object = m_objects[index];
        if (object.state == State::BeingRead) {
            return fail(u"a container holds itself"_s);
        }
        if (object.state == State::Unread) {
            object.state = State::BeingRead;
            Marker marker;
            if (depth >= kMaximumDepth || !readMarker(index, marker)) {
                return fail(u"it is nested too deep"_s);
            }
            if (!readContent(marker, object, depth)) {
                return false;
            }
            object.state = State::Read;
        }
        if (depth + object.height > kMaximumDepth) {
            return fail(u"it is nested too deep"_s);
        }
        return true;
    }

    bool readContent(const Marker& marker, Object& object, int depth)
    {
        switch (marker.kind) {
        case 0x0:
            object.value = marker.number == 0x9;
            return marker.number == 0x8 || marker.number == 0x9 || fail(u"unknown value"_s);
        case 0x1:
            return readInteger(marker, object);
        case 0x2:
        case 0x3:
            return readReal(marker, object);
        case 0x4:
        case 0x5:
        case 0x6:
        case 0x7:
            return readBytes(marker, object);
        case 0x8:
            return readUid(marker, object);
        case 0xA:
            return readArray(marker, object, depth);
        case 0xD:
            return readDictionary(marker, object, depth);
        default:
            return fail(u"it holds an object of an unknown type"_s);
        }
    }

    bool readInteger(const Marker& marker, Object& object)
    {
        const Span whole{marker.content, quint64{1} << marker.number};
        if (marker.number > 4 || !contains(whole)) {
            return fail(u"an integer ends early"_s);
        }
        if (whole.size < 16) {
            // Up to four bytes are unsigned, eight are signed.
            object.value = static_cast<qlonglong>(unsignedAt(whole));
            return true;
        }
        // Sixteen bytes hold what needs the sixty-fourth bit and is not negative.
        const quint64 high = unsignedAt({whole.offset, 8});
        const quint64 low = unsignedAt({whole.offset + 8, 8});
        const bool negative = high == std::numeric_limits<quint64>::max() && (low >> 63U) == 1;
        if (high != 0 && !negative) {
            return fail(u"an integer is too large"_s);
        }
        object.value = negative || (low >> 63U) == 0 ? QVariant(static_cast<qlonglong>(low))
                                                     : QVariant(qulonglong{low});
        return true;
    }

    bool readReal(const Marker& marker, Object& object)
    {
        const bool isDate = marker.kind == 0x3;
        const bool isFloat = !isDate && marker.number == 2;
        const Span whole{marker.content, isFloat ? quint64{4} : quint64{8}};
        if ((!isFloat && marker.number != 3) || !contains(whole)) {
            return fail(u"a real number or a date ends early"_s);
        }
        const quint64 bits = unsignedAt(whole);
        const double number = isFloat ? double{std::bit_cast<float>(static_cast<quint32>(bits))}
                                      : std::bit_cast<double>(bits);
        object.value = isDate ? QVariant::fromValue(PropertyList::Date{number}) : QVariant(number);
        return true;
    }

    /// Data and the three kinds of text: ASCII, UTF-16 big-endian, UTF-8.
    bool readBytes(const Marker& marker, Object& object)
    {
        const quint64 width = marker.kind == 0x6 ? 2 : 1;
        if (marker.number > m_tableOffset || !claim({marker.content, marker.number * width})) {
            return fail(u"a text or data ends early"_s);
        }
        const char* start = m_bytes.constData() + marker.content;
        const auto count = static_cast<qsizetype>(marker.number);
        if (marker.kind == 0x4) {
            object.value = QByteArray(start, count);
        } else if (marker.kind == 0x6) {
            QString text(count, Qt::Uninitialized);
            qFromBigEndian<char16_t>(start, count, text.data());
            object.value = text;
        } else {
            // Latin-1 keeps apart what ASCII text should not hold.
            object.value = marker.kind == 0x5 ? QString::fromLatin1(start, count)
                                              : QString::fromUtf8(start, count);
        }
        return true;
    }

    bool readUid(const Marker& marker, Object& object)
    {
        const Span whole{marker.content, marker.number + 1};
        if (whole.size > 8 || !contains(whole)) {
            return fail(u"a reference ends early"_s);
        }
        object.value = QVariant::fromValue(PropertyList::Uid{unsignedAt(whole)});
        return true;
    }

    /// Reads the object that the reference at `offset` names and counts it as part of `container`.
    bool readReferenced(quint64 offset, Object& container, int depth, QVariant& value)
    {
        const quint64 index = unsignedAt({offset, m_referenceSize});
        if (!readObject(index, depth + 1)) {
            return false;
        }
        const Object& child = m_objects[index];
        container.unfolded += child.unfolded;
        container.height = std::max(container.height, child.height + 1);
        value = child.value;
        return container.unfolded <= kMaximumValues || fail(u"it unfolds to too many values"_s);
    }

    bool readArray(const Marker& marker, Object& object, int depth)
    {
        if (marker.number > m_tableOffset ||
            !claim({marker.content, marker.number * m_referenceSize})) {
            return fail(u"an array ends early"_s);
        }
        QVariantList items;
        items.reserve(static_cast<qsizetype>(marker.number));
        for (quint64 index = 0; index < marker.number; ++index) {
            QVariant item;
            if (!readReferenced(marker.content + index * m_referenceSize, object, depth, item)) {
                return false;
            }
            items.append(item);
        }
        object.value = items;
        return true;
    }

    bool readDictionary(const Marker& marker, Object& object, int depth)
    {
        if (marker.number > m_tableOffset ||
            !claim({marker.content, 2 * marker.number * m_referenceSize})) {
            return fail(u"a dictionary ends early"_s);
        }
        const quint64 values = marker.content + marker.number * m_referenceSize;
        QVariantMap entries;
        for (quint64 index = 0; index < marker.number; ++index) {
            const quint64 step = index * m_referenceSize;
            QVariant key;
            QVariant value;
            if (!readReferenced(marker.content + step, object, depth, key) ||
                !readReferenced(values + step, object, depth, value)) {
                return false;
            }
            if (key.typeId() != QMetaType::QString) {
                return fail(u"a key is no text"_s);
            }
            entries.insert(key.toString(), value);
        }
        object.value = entries;
        return true;
    }

    const QByteArray& m_bytes;
    std::vector<quint64> m_offsets;
    std::vector<Object> m_objects;
    quint64 m_referenceSize{1};
    quint64 m_rootIndex{0};
    quint64 m_tableOffset{0};
    quint64 m_claimed{0};
    QString m_problem;
};

} // namespace

Result<QVariant> PropertyListForms::readBinary(const QByteArray& bytes)
{
    return BinaryReader(bytes).read();
}
