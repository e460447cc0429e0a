#include "CatalogueXml.h"

#include "PropertyList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace
{

/// Room for the digits of any double with six decimals.
constexpr std::size_t kNumberRoom = 512;

bool fitsXml(QChar character)
{
    const char16_t code = character.unicode();
    const bool isBlank = code == u'\t' || code == u'\n' || code == u'\r';
    return (code >= u' ' || isBlank) && code != 0xFFFE && code != 0xFFFF;
}

/// What stands for a character that XML reserves; empty for any other.
QLatin1StringView entityOf(QChar character)
{
    switch (character.unicode()) {
    case u'&':
        return QLatin1StringView("&amp;");
    case u'<':
        return QLatin1StringView("&lt;");
    case u'>':
        return QLatin1StringView("&gt;");
    case u'\'':
        return QLatin1StringView("&apos;");
    case u'"':
        return QLatin1StringView("&quot;");
    case u'\r':
        return QLatin1StringView("&#13;"); // a bare one would be read as a line feed
    default:
        return {};
    }
}

bool isPlain(QChar character)
{
    return fitsXml(character) && entityOf(character).isEmpty();
}

QByteArray numberText(double number, std::chars_format format, int precision)
{
    std::array<char, kNumberRoom> room{};
    const double shown = std::isfinite(number) ? number : 0.0;
    const std::to_chars_result result =
        std::to_chars(room.data(), room.data() + room.size(), shown, format, precision);
    return {room.data(), result.ptr - room.data()};
}

} // namespace

QByteArray CatalogueXml::escaped(const QString& text)
{
    if (std::ranges::all_of(text, isPlain)) { // nearly all are
        return text.toUtf8();
    }
    QString safe;
    safe.reserve(text.size());
    for (const QChar character : text) {
        if (const QLatin1StringView entity = entityOf(character); !entity.isEmpty()) {
            safe += entity;
        } else if (fitsXml(character)) {
            safe += character;
        }
    }
    return safe.toUtf8();
}

QByteArray CatalogueXml::fixed(double number, int decimals)
{
    return numberText(number, std::chars_format::fixed, decimals);
}

QByteArray CatalogueXml::shortest(double number)
{
    constexpr int kDigits = 10;
    return numberText(number, std::chars_format::general, kDigits);
}

void CatalogueXml::indent(int indentation)
{
    if (m_layout == Layout::Indented) {
        m_bytes.append(indentation, '\t');
    }
}

void CatalogueXml::line(int indentation, const QByteArray& text)
{
    line(indentation, "", text, "");
}

void CatalogueXml::line(int indentation,
                        const char* before,
                        const QByteArray& text,
                        const char* after)
{
    indent(indentation);
    m_bytes.append(before).append(text).append(after).append('\n');
}

void CatalogueXml::keyLine(int indentation, const char* key)
{
    indent(indentation);
    m_bytes.append("<key>").append(key).append("</key>\n");
}

void CatalogueXml::string(int indentation, const char* key, const QString& value)
{
    keyLine(indentation, key);
    line(indentation, "<string>", escaped(value), "</string>");
}

void CatalogueXml::integer(int indentation, const char* key, qint64 value)
{
    keyLine(indentation, key);
    line(indentation, "<integer>", QByteArray::number(value), "</integer>");
}

void CatalogueXml::real(int indentation, const char* key, const QByteArray& text)
{
    keyLine(indentation, key);
    line(indentation, "<real>", text, "</real>");
}

void CatalogueXml::inlineReal(int indentation, const char* key, const QByteArray& text)
{
    line(indentation, "<key>" + QByteArray(key) + "</key><real>" + text + "</real>");
}

void CatalogueXml::inlineBoolean(int indentation, const char* key, bool value)
{
    line(indentation, "<key>" + QByteArray(key) + "</key>" + (value ? "<true/>" : "<false/>"));
}

void CatalogueXml::carriedOver(const QString& key, const QVariant& value)
{
    const Result<QByteArray> list = PropertyList::toXml(QVariantMap{{key, value}});
    if (!list.ok()) {
        return; // a date of a binary list that XML cannot tell
    }
    const QByteArray begin = "<dict>\n";
    const qsizetype from = list.value().indexOf(begin) + begin.size();
    m_bytes += list.value().mid(from, list.value().lastIndexOf("</dict>") - from);
}

void CatalogueXml::ids(int indentation,
                       const char* key,
                       const QList<qint64>& ids,
                       int itemIndentation)
{
    keyLine(indentation, key);
    line(indentation, "<array>");
    for (const qint64 id : ids) {
        line(itemIndentation, "<string>", QByteArray::number(id), "</string>");
    }
    line(indentation, "</array>");
}
