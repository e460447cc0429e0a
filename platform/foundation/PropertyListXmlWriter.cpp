#include "PropertyListForms.h"

#include <QDateTime>
#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

namespace
{

using namespace PropertyListForms;

constexpr double kSecondsFrom1970To2001 = 978307200.0;
/// First second of year 1 and last of year 9999, in seconds since 2001: what four digits can tell.
constexpr double kFirstSecond = -63113904000.0;
constexpr double kLastSecond = 252423993599.0;
/// Bytes of data in one line of base 64.
constexpr qsizetype kDataLine = 51;

/// Lays a property list out as other programs do: tabs, one element a line, the DOCTYPE of Apple's
/// DTD.
class XmlWriter final
{
public:
    [[nodiscard]] Result<QByteArray> write(const QVariant& root)
    {
        m_bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                  "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                  "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                  "<plist version=\"1.0\">\n";
        if (!append(root, 0)) {
            return Error{ErrorCode::Unsupported,
                         u"%1 has no place in a property list"_s.arg(m_unsupported)};
        }
        m_bytes.append("</plist>\n");
        return m_bytes;
    }

private:
    bool refuse(const QString& what)
    {
        m_unsupported = what;
        return false;
    }

    void line(int depth, const QByteArray& content)
    {
        m_bytes.append(depth, '\t');
        m_bytes.append(content);
        m_bytes.append('\n');
    }

    void element(int depth, const QByteArray& name, const QByteArray& content)
    {
        line(depth, '<' + name + '>' + content + "</" + name + '>');
    }

    /// Escaped for XML; characters that no XML document may hold are left out.
    static QByteArray escaped(const QString& text)
    {
        QString kept = text;
        kept.removeIf([](QChar character) {
            const char16_t code = character.unicode();
            const bool isControl = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
            return isControl || code >= 0xFFFE;
        });
        // A line end would be read back as a line feed.
        return kept.toHtmlEscaped().replace(u'\r', u"&#13;"_s).toUtf8();
    }

    bool append(const QVariant& raw, int depth)
    {
        const QVariant value = normalised(raw);
        if (depth >= kMaximumDepth) {
            return refuse(u"a value nested this deep"_s);
        }
        switch (value.typeId()) {
        case QMetaType::QVariantMap:
            return appendDictionary(value.toMap(), depth);
        case QMetaType::QVariantList:
            return appendArray(value.toList(), depth);
        case QMetaType::QString:
            element(depth, "string", escaped(value.toString()));
            return true;
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
            element(depth, "integer", value.toString().toLatin1());
            return true;
        case QMetaType::Double:
            element(depth, "real", realText(value.toDouble()));
            return true;
        case QMetaType::Bool:
            line(depth, value.toBool() ? "<true/>" : "<false/>");
            return true;
        case QMetaType::QByteArray:
            appendData(value.toByteArray(), depth);
            return true;
        default:
            return appendOwnType(value, raw, depth);
        }
    }

    bool appendOwnType(const QVariant& value, const QVariant& raw, int depth)
    {
        if (value.metaType() == QMetaType::fromType<PropertyList::Uid>()) {
            const QVariantMap spelt{
                {u"CF$UID"_s, QVariant(qulonglong{value.value<PropertyList::Uid>().value})}};
            return appendDictionary(spelt, depth);
        }
        if (value.metaType() == QMetaType::fromType<PropertyList::Date>()) {
            const double seconds = std::floor(value.value<PropertyList::Date>().secondsSince2001);
            if (!(seconds >= kFirstSecond && seconds <= kLastSecond)) {
                return refuse(u"a date outside of the years 1 to 9999"_s);
            }
            const QDateTime date = QDateTime::fromSecsSinceEpoch(
                static_cast<qint64>(seconds + kSecondsFrom1970To2001), Qt::UTC);
            element(depth, "date", date.toString(Qt::ISODate).toLatin1());
            return true;
        }
        return refuse(raw.isValid()
                          ? u"a value of the type %1"_s.arg(QString::fromLatin1(raw.typeName()))
                          : u"a value that is none"_s);
    }

    bool appendDictionary(const QVariantMap& map, int depth)
    {
        if (map.isEmpty()) {
            line(depth, "<dict/>");
            return true;
        }
        line(depth, "<dict>");
        for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry) {
            element(depth + 1, "key", escaped(entry.key()));
            if (!append(entry.value(), depth + 1)) {
                return false;
            }
        }
        line(depth, "</dict>");
        return true;
    }

    bool appendArray(const QVariantList& items, int depth)
    {
        if (items.isEmpty()) {
            line(depth, "<array/>");
            return true;
        }
        line(depth, "<array>");
        for (const QVariant& item : items) {
            if (!append(item, depth + 1)) {
                return false;
            }
        }
        line(depth, "</array>");
        return true;
    }

    void appendData(const QByteArray& data, int depth)
    {
        line(depth, "<data>");
        for (qsizetype start = 0; start < data.size(); start += kDataLine) {
            line(depth, data.mid(start, kDataLine).toBase64());
        }
        line(depth, "</data>");
    }

    static QByteArray realText(double number)
    {
        if (std::isnan(number)) {
            return "nan";
        }
        if (std::isinf(number)) {
            return number < 0 ? "-infinity" : "+infinity";
        }
        // The shortest text that reads back as the same number.
        return QByteArray::number(number, 'g', QLocale::FloatingPointShortest);
    }

    QByteArray m_bytes;
    QString m_unsupported;
};

} // namespace

Result<QByteArray> PropertyListForms::writeXml(const QVariant& root)
{
    return XmlWriter().write(root);
}
