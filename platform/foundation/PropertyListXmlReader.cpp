#include "PropertyListForms.h"

#include <QDateTime>
#include <QXmlStreamReader>

#include <charconv>
#include <limits>

using namespace Qt::StringLiterals;

namespace
{

using namespace PropertyListForms;

constexpr qint64 kMillisecondsFrom1970To2001 = 978'307'200'000;

/// What XML forbids in a text although other programs write it into property lists.
bool isForbiddenControl(char16_t character)
{
    return character < 0x20 && character != '\t' && character != '\n' && character != '\r';
}

/// The file's text, from UTF-8 unless it says otherwise about itself. Forbidden control characters
/// are left out: other programs copy them from comments of photos into their lists, and a library
/// must not become unreadable by one of them.
QString decoded(const QByteArray& bytes)
{
    QString text = QString::fromUtf8(bytes);
    text.removeIf([](QChar character) { return isForbiddenControl(character.unicode()); });
    return text;
}

bool namesOtherEncoding(const QByteArray& bytes)
{
    if (bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE")) {
        return true;
    }
    const QByteArray prolog = bytes.left(200).toLower();
    const qsizetype end = prolog.indexOf("?>");
    const qsizetype found = prolog.indexOf("encoding");
    return found >= 0 && found < end && !prolog.left(end).contains("utf-8") &&
           !prolog.left(end).contains("utf8");
}

class XmlReader final
{
public:
    explicit XmlReader(const QByteArray& bytes)
    {
        m_xml.setNamespaceProcessing(false);
        if (namesOtherEncoding(bytes)) {
            m_xml.addData(bytes);
        } else {
            m_xml.addData(decoded(bytes));
        }
    }

    [[nodiscard]] Result<QVariant> read()
    {
        QVariant root;
        if (m_xml.readNextStartElement()) {
            const bool wrapped = m_xml.name() == "plist"_L1;
            if (wrapped && !m_xml.readNextStartElement()) {
                m_xml.raiseError(u"it is empty"_s);
            }
            root = readValue(0);
            if (wrapped && m_xml.readNextStartElement()) {
                m_xml.raiseError(u"it holds more than one value"_s);
            }
        }
        while (!m_xml.atEnd()) {
            m_xml.readNext();
        }
        if (m_xml.hasError()) {
            return Error{ErrorCode::Damaged,
                         u"the property list is damaged: line %1: %2"_s.arg(m_xml.lineNumber())
                             .arg(m_xml.errorString())};
        }
        return root;
    }

private:
    /// Reads the element that has just begun to its end. An error ends the whole.
    QVariant readValue(int depth)
    {
        const QStringView name = m_xml.name();
        if (depth >= kMaximumDepth) {
            m_xml.raiseError(u"it is nested too deep"_s);
            return {};
        }
        if (name == "dict"_L1) {
            return readDictionary(depth);
        }
        if (name == "array"_L1) {
            return readArray(depth);
        }
        if (name == "true"_L1 || name == "false"_L1) {
            const bool value = name == "true"_L1;
            m_xml.skipCurrentElement();
            return value;
        }
        return readScalar(name.toString());
    }

    QVariant readArray(int depth)
    {
        QVariantList items;
        while (m_xml.readNextStartElement()) {
            items.append(readValue(depth + 1));
        }
        return items;
    }

    QVariant readDictionary(int depth)
    {
        QVariantMap entries;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != "key"_L1) {
                m_xml.raiseError(u"a value has no key"_s);
                return {};
            }
            const QString key = m_xml.readElementText();
            if (!m_xml.readNextStartElement()) {
                m_xml.raiseError(u"the key \"%1\" has no value"_s.arg(key));
                return {};
            }
            entries.insert(key, readValue(depth + 1));
        }
        // This is how a keyed archive's reference is spelt in this form.
        const QVariant reference = entries.value(u"CF$UID"_s);
        if (entries.size() == 1 && reference.typeId() == QMetaType::LongLong) {
            return QVariant::fromValue(
                PropertyList::Uid{static_cast<quint64>(reference.toLongLong())});
        }
        return entries;
    }

    QVariant readScalar(const QString& name)
    {
        const QString text = m_xml.readElementText();
        if (name == "string"_L1) {
            return text.isNull() ? u""_s : text;
        }
        if (name == "integer"_L1) {
            return readInteger(text.trimmed().toLatin1());
        }
        if (name == "real"_L1) {
            return readReal(text.trimmed().toLower().toLatin1());
        }
        if (name == "date"_L1) {
            return readDate(text.trimmed());
        }
        if (name == "data"_L1) {
            return readData(text);
        }
        m_xml.raiseError(u"it holds an element <%1>"_s.arg(name));
        return {};
    }

    QVariant readInteger(QByteArray text)
    {
        const bool negative = text.startsWith('-');
        if (negative || text.startsWith('+')) {
            text.remove(0, 1);
        }
        const bool hexadecimal = text.startsWith("0x") || text.startsWith("0X");
        if (hexadecimal) {
            text.remove(0, 2);
        }
        quint64 magnitude = 0;
        const auto [end, error] =
            std::from_chars(text.cbegin(), text.cend(), magnitude, hexadecimal ? 16 : 10);
        constexpr quint64 kLargest = std::numeric_limits<qint64>::max();
        const quint64 most = negative ? kLargest + 1 : std::numeric_limits<quint64>::max();
        if (error != std::errc() || end != text.cend() || magnitude > most) {
            m_xml.raiseError(u"an integer is none"_s);
            return {};
        }
        if (negative) {
            return static_cast<qlonglong>(0 - magnitude);
        }
        return magnitude <= kLargest ? QVariant(static_cast<qlonglong>(magnitude))
                                     : QVariant(qulonglong{magnitude});
    }

    QVariant readReal(const QByteArray& text)
    {
        const QByteArray unsignedText =
            text.startsWith('+') || text.startsWith('-') ? text.mid(1) : text;
        const double sign = text.startsWith('-') ? -1.0 : 1.0;
        if (unsignedText == "nan") {
            return std::numeric_limits<double>::quiet_NaN();
        }
        if (unsignedText == "inf" || unsignedText == "infinity") {
            return sign * std::numeric_limits<double>::infinity();
        }
        bool isNumber = false;
        const double number = unsignedText.toDouble(&isNumber);
        if (!isNumber) {
            m_xml.raiseError(u"a real number is none"_s);
        }
        return sign * number;
    }

    QVariant readDate(const QString& text)
    {
        const QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
        if (!date.isValid() || !text.endsWith(u'Z')) {
            m_xml.raiseError(u"a date is none"_s);
            return {};
        }
        const qint64 milliseconds = date.toMSecsSinceEpoch() - kMillisecondsFrom1970To2001;
        return QVariant::fromValue(PropertyList::Date{static_cast<double>(milliseconds) / 1000.0});
    }

    QVariant readData(const QString& text)
    {
        QByteArray encoded = text.toLatin1();
        encoded.removeIf(
            [](char character) { return " \t\r\n"_L1.contains(QLatin1Char(character)); });
        const auto result =
            QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
        if (!result) {
            m_xml.raiseError(u"data is not in base 64"_s);
            return {};
        }
        return *result;
    }

    QXmlStreamReader m_xml;
};

} // namespace

Result<QVariant> PropertyListForms::readXml(const QByteArray& bytes)
{
    return XmlReader(bytes).read();
}
