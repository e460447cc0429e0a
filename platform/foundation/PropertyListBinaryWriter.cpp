#include "PropertyListForms.h"

#include <QHash>

#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

using namespace PropertyListForms;

/// As few of 1, 2, 4, 8 bytes as hold the number.
int widthOf(quint64 number)
{
    if (number <= std::numeric_limits<quint8>::max()) {
        return 1;
    }
    if (number <= std::numeric_limits<quint16>::max()) {
        return 2;
    }
    return number <= std::numeric_limits<quint32>::max() ? 4 : 8;
}

void appendUnsigned(QByteArray& bytes, quint64 number, int width)
{
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
        bytes.append(
            static_cast<char>(static_cast<quint8>(number >> static_cast<unsigned>(shift))));
    }
}

void appendInteger(QByteArray& bytes, const QVariant& value)
{
    if (value.typeId() == QMetaType::ULongLong) {
        // The reader takes eight bytes as signed, so what needs all their bits gets sixteen.
        bytes.append('\x14');
        appendUnsigned(bytes, 0, 8);
        appendUnsigned(bytes, value.toULongLong(), 8);
        return;
    }
    const auto bits = static_cast<quint64>(value.toLongLong());
    const int width = widthOf(bits);
    bytes.append(static_cast<char>(0x10 | std::countr_zero(static_cast<unsigned>(width))));
    appendUnsigned(bytes, bits, width);
}

/// The marker byte with a count, which follows as an integer from 15 on.
void appendMarker(QByteArray& bytes, int kind, qsizetype count)
{
    const bool isShort = count < 0xF;
    bytes.append(
        static_cast<char>(static_cast<quint8>((kind << 4) | (isShort ? int(count) : 0xF))));
    if (!isShort) {
        appendInteger(bytes, QVariant(static_cast<qlonglong>(count)));
    }
}

void appendText(QByteArray& bytes, const QString& text)
{
    const bool isAscii = std::all_of(
        text.cbegin(), text.cend(), [](QChar character) { return character.unicode() < 0x80; });
    appendMarker(bytes, isAscii ? 0x5 : 0x6, text.size());
    if (isAscii) {
        bytes.append(text.toLatin1());
        return;
    }
    for (const QChar character : text) {
        appendUnsigned(bytes, character.unicode(), 2);
    }
}

/// Writes one binary property list: first every value gets its number, then, the size of a
/// reference being known, the objects are laid out.
class BinaryWriter final
{
public:
    [[nodiscard]] Result<QByteArray> write(const QVariant& root)
    {
        if (!collect(root, 0)) {
            return Error{
                ErrorCode::Unsupported,
                u"a value of the type %1 has no place in a property list"_s.arg(m_unsupported)};
        }
        m_referenceSize = widthOf(m_values.size());
        QByteArray bytes("bplist00");
        std::vector<quint64> offsets;
        offsets.reserve(m_values.size());
        for (const Value& value : m_values) {
            offsets.push_back(static_cast<quint64>(bytes.size()));
            append(bytes, value);
        }
        const auto tableOffset = static_cast<quint64>(bytes.size());
        const int offsetSize = widthOf(tableOffset);
        for (const quint64 offset : offsets) {
            appendUnsigned(bytes, offset, offsetSize);
        }
        bytes.append(6, '\0');
        appendUnsigned(bytes, static_cast<quint64>(offsetSize), 1);
        appendUnsigned(bytes, static_cast<quint64>(m_referenceSize), 1);
        appendUnsigned(bytes, offsets.size(), 8);
        appendUnsigned(bytes, 0, 8);
        appendUnsigned(bytes, tableOffset, 8);
        return bytes;
    }

private:
    struct Value {
        QVariant scalar;               ///< of a container: the container, for its type
        std::vector<quint64> children; ///< dictionary: keys, then values
    };

    /// Gives the value and what it holds their numbers; equal texts share one.
    bool collect(const QVariant& raw, int depth)
    {
        const QVariant value = normalised(raw);
        if (!value.isValid() || depth >= kMaximumDepth) {
            m_unsupported = QString::fromLatin1(raw.isValid() ? raw.typeName() : "nothing");
            return false;
        }
        if (value.typeId() == QMetaType::QString) {
            m_last = numberOfText(value.toString());
            return true;
        }
        const quint64 number = m_values.size();
        m_values.push_back({value, {}});
        std::vector<quint64> children;
        if (value.typeId() == QMetaType::QVariantMap &&
            !collectMap(value.toMap(), depth, children)) {
            return false;
        }
        if (value.typeId() == QMetaType::QVariantList) {
            const QVariantList items = value.toList();
            for (const QVariant& item : items) {
                if (!collect(item, depth + 1)) {
                    return false;
                }
                children.push_back(m_last);
            }
        }
        m_values[number].children = std::move(children);
        m_last = number;
        return true;
    }

    bool collectMap(const QVariantMap& map, int depth, std::vector<quint64>& children)
    {
        const QStringList keys = map.keys();
        for (const QString& key : keys) {
            children.push_back(numberOfText(key));
        }
        for (const QVariant& item : map) {
            if (!collect(item, depth + 1)) {
                return false;
            }
            children.push_back(m_last);
        }
        return true;
    }

    quint64 numberOfText(const QString& text)
    {
        const auto known = m_texts.constFind(text);
        if (known != m_texts.constEnd()) {
            return known.value();
        }
        const quint64 number = m_values.size();
        m_texts.insert(text, number);
        m_values.push_back({QVariant(text), {}});
        return number;
    }

    void append(QByteArray& bytes, const Value& value) const
    {
        switch (value.scalar.typeId()) {
        case QMetaType::QVariantMap:
            appendMarker(bytes, 0xD, static_cast<qsizetype>(value.children.size() / 2));
            break;
        case QMetaType::QVariantList:
            appendMarker(bytes, 0xA, static_cast<qsizetype>(value.children.size()));
            break;
        case QMetaType::QString:
            appendText(bytes, value.scalar.toString());
            break;
        case QMetaType::QByteArray:
            appendMarker(bytes, 0x4, value.scalar.toByteArray().size());
            bytes.append(value.scalar.toByteArray());
            break;
        case QMetaType::Bool:
            bytes.append(value.scalar.toBool() ? '\x09' : '\x08');
            break;
        case QMetaType::Double:
            bytes.append('\x23');
            appendUnsigned(bytes, std::bit_cast<quint64>(value.scalar.toDouble()), 8);
            break;
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            appendInteger(bytes, value.scalar);
            break;
        default:
            appendOwnType(bytes, value.scalar);
            break;
        }
        for (const quint64 child : value.children) {
            appendUnsigned(bytes, child, m_referenceSize);
        }
    }

    static void appendOwnType(QByteArray& bytes, const QVariant& value)
    {
        if (value.metaType() == QMetaType::fromType<PropertyList::Date>()) {
            bytes.append('\x33');
            const double seconds = value.value<PropertyList::Date>().secondsSince2001;
            appendUnsigned(bytes, std::bit_cast<quint64>(seconds), 8);
            return;
        }
        const quint64 reference = value.value<PropertyList::Uid>().value;
        const int width = widthOf(reference);
        bytes.append(static_cast<char>(static_cast<quint8>(0x80 | (width - 1))));
        appendUnsigned(bytes, reference, width);
    }

    std::vector<Value> m_values;
    QHash<QString, quint64> m_texts;
    quint64 m_last{0};
    int m_referenceSize{1};
    QString m_unsupported;
};

} // namespace

Result<QByteArray> PropertyListForms::writeBinary(const QVariant& root)
{
    return BinaryWriter().write(root);
}
