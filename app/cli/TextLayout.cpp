#include "TextLayout.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace
{

struct Range {
    char32_t first;
    char32_t last;
};

/// The blocks of East Asian wide characters and of emoji (Unicode Standard Annex #11), whole
/// blocks taken together.
constexpr std::array kWideRanges{
    Range{0x1100, 0x115F},
    Range{0x2E80, 0x303E},
    Range{0x3041, 0xA4CF},
    Range{0xA960, 0xA97F},
    Range{0xAC00, 0xD7A3},
    Range{0xF900, 0xFAFF},
    Range{0xFE30, 0xFE6F},
    Range{0xFF00, 0xFF60},
    Range{0xFFE0, 0xFFE6},
    Range{0x1F300, 0x1F64F},
    Range{0x1F680, 0x1F6FF},
    Range{0x1F900, 0x1F9FF},
    Range{0x1FA70, 0x1FAFF},
    Range{0x20000, 0x3FFFD},
};

constexpr auto kEllipsis = u'…';
constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;

/// Nearly every character: kept by all, and one column wide.
bool isPlain(QChar character)
{
    return character >= u' ' && character <= u'~';
}

int widthOf(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
        category == QChar::Other_Format || category == QChar::Other_Control) {
        return 0;
    }
    const bool wide = std::ranges::any_of(kWideRanges, [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
    return wide ? 2 : 1;
}

enum class LineEnds : quint8 { Kept, AsSpaces };

QString cleaned(const QString& text, LineEnds lineEnds)
{
    const bool isClean = std::ranges::all_of(text, [lineEnds](QChar character) {
        return isPlain(character) || (character == u'\n' && lineEnds == LineEnds::Kept);
    });
    if (isClean) {
        return text;
    }
    QString result;
    result.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        const QChar::Category category = QChar::category(character);
        const bool lineEnd = character == U'\n' || category == QChar::Separator_Line ||
                             category == QChar::Separator_Paragraph;
        if (lineEnd) {
            result += lineEnds == LineEnds::Kept ? u'\n' : u' ';
        } else if (character == U'\t') {
            result += lineEnds == LineEnds::Kept ? u'\t' : u' ';
        } else if (category != QChar::Other_Control && !TextLayout::isDirectionMark(character)) {
            result += QStringView(QChar::fromUcs4(character));
        }
    }
    return result;
}

bool isLineSeparator(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
}

/// Whether it would steer a terminal or end a line.
bool steers(char32_t character)
{
    return QChar::category(character) == QChar::Other_Control || isLineSeparator(character) ||
           TextLayout::isDirectionMark(character);
}

QString hexadecimal(char32_t number, int digits)
{
    return QString::number(number, 16).rightJustified(digits, u'0');
}

/// A short escape where there is one; else empty.
QString shortEscape(char32_t character)
{
    switch (character) {
    case U'\n':
        return u"\\n"_s;
    case U'\r':
        return u"\\r"_s;
    case U'\t':
        return u"\\t"_s;
    default:
        return {};
    }
}

QString padding(int columns)
{
    return QString(std::max(0, columns), u' ');
}

} // namespace

bool TextLayout::isDirectionMark(char32_t character)
{
    return character == 0x061C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

QString TextLayout::printable(const QString& text)
{
    return cleaned(text, LineEnds::AsSpaces);
}

QString TextLayout::printableLines(const QString& text)
{
    return cleaned(text, LineEnds::Kept);
}

QString TextLayout::escaped(const QString& text)
{
    QString result;
    result.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        if (!steers(character)) {
            result += QStringView(QChar::fromUcs4(character));
        } else if (const QString brief = shortEscape(character); !brief.isEmpty()) {
            result += brief;
        } else {
            result += character < 0x100 ? u"\\x"_s + hexadecimal(character, 2)
                                        : u"\\u"_s + hexadecimal(character, 4);
        }
    }
    return result;
}

QString TextLayout::shellQuoted(const QString& text)
{
    const auto characters = text.toUcs4();
    if (std::ranges::none_of(characters, steers)) {
        return u'\'' + QString(text).replace(u'\'', u"'\\''"_s) + u'\'';
    }
    QString result = u"$'"_s;
    for (const char32_t character : characters) {
        const QString written = QStringView(QChar::fromUcs4(character)).toString();
        if (character == U'\'' || character == U'\\') {
            result += u'\\' + written;
        } else if (!steers(character)) {
            result += written;
        } else if (const QString brief = shortEscape(character); !brief.isEmpty()) {
            result += brief;
        } else {
            // Bytes, as the file system has them, whatever the shell takes for its encoding.
            for (const char byte : written.toUtf8()) {
                result += u"\\x"_s + hexadecimal(static_cast<uchar>(byte), 2);
            }
        }
    }
    return result + u'\'';
}

int TextLayout::displayWidth(const QString& text)
{
    if (std::ranges::all_of(text, isPlain)) {
        return static_cast<int>(text.size());
    }
    int width = 0;
    for (const char32_t character : text.toUcs4()) {
        width += widthOf(character);
    }
    return width;
}

QString TextLayout::elided(const QString& text, int columns)
{
    if (displayWidth(text) <= columns) {
        return text;
    }
    QString result;
    int width = 1; // of the ellipsis
    for (const char32_t character : text.toUcs4()) {
        width += widthOf(character);
        if (width > columns) {
            break;
        }
        result += QStringView(QChar::fromUcs4(character));
    }
    return columns > 0 ? result + kEllipsis : QString();
}

QString TextLayout::table(const QList<QStringList>& rows, const QList<Align>& alignments)
{
    QList<int> widths(alignments.size(), 0);
    for (const QStringList& row : rows) {
        for (qsizetype i = 0; i < alignments.size(); ++i) {
            widths[i] = std::max(widths.at(i), displayWidth(row.at(i)));
        }
    }
    QString result;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype i = 0; i < alignments.size(); ++i) {
            const QString pad = padding(widths.at(i) - displayWidth(row.at(i)));
            line += i > 0 ? u"  "_s : QString();
            line += alignments.at(i) == Align::Right ? pad + row.at(i) : row.at(i) + pad;
        }
        while (line.endsWith(u' ')) {
            line.chop(1);
        }
        result += line + u'\n';
    }
    return result;
}

QString TextLayout::megabytes(qint64 bytes)
{
    const double number = static_cast<double>(bytes) / kBytesPerMegabyte;
    return QString::number(number, 'f', 2) + u" MB"_s;
}
