#include "PathRedaction.h"

#include <algorithm>
#include <array>

namespace
{

/// A way to quote: what may begin it, and what may end it.
struct Quotes {
    std::span<const std::string_view> openings;
    std::span<const std::string_view> closings;
};

constexpr std::array<std::string_view, 1> kDouble{"\""};
constexpr std::array<std::string_view, 2> kSingle{"'", "`"}; // `so'
constexpr std::array<std::string_view, 1> kBracket{"["};
constexpr std::array<std::string_view, 1> kBracketEnd{"]"};
constexpr std::array<std::string_view, 14> kTypographic{
    "“", "”", "„", "‘", "’", "‚", "«", "»", "‹", "›", "「", "」", "『", "』"};
constexpr std::array<Quotes, 4> kQuotes{{{kDouble, kDouble},
                                         {kSingle, kSingle},
                                         {kBracket, kBracketEnd},
                                         {kTypographic, kTypographic}}};
/// Those that are apostrophes within a word, and begin a quotation only before one.
constexpr std::array<std::string_view, 3> kApostrophes{"'", "`", "’"};
/// What can stand right before a word of a path and be no part of it.
constexpr std::string_view kBeforeWord = " \t\r\n\"'`()[]{}<>=,;|";
/// What can stand right after the end of a quotation.
constexpr std::string_view kAfterQuotation = " \t\r\n\"'`()[]{}<>=,;|.:!?/";

/// How many bytes of UTF-8 a character has that begins with this one.
std::size_t lengthOfCharacter(unsigned char first)
{
    if (first < 0xC0) {
        return 1;
    }
    if (first < 0xE0) {
        return 2;
    }
    return first < 0xF0 ? 3 : 4;
}

/// Text of a limited length that ends with a whole character.
class Line final
{
public:
    explicit Line(std::span<char> buffer)
        : m_buffer(buffer)
    {
    }

    void append(std::string_view text)
    {
        for (const char character : text) {
            if (m_length == m_buffer.size()) {
                m_isCut = true;
                return;
            }
            const auto byte = static_cast<unsigned char>(character);
            m_buffer[m_length] = byte < 0x20 || byte == 0x7F ? ' ' : character;
            ++m_length;
        }
    }

    /// How much was appended and is not cut off; may be half a character too much.
    [[nodiscard]] std::size_t mark() const { return m_length; }

    /// Takes back all that came after the mark.
    void goBackTo(std::size_t mark)
    {
        m_isCut = m_isCut && mark == m_buffer.size();
        m_length = mark;
    }

    [[nodiscard]] std::size_t length() const
    {
        std::size_t begin = m_length; // of the last character, which may have lost bytes
        while (m_isCut && begin > 0) {
            --begin;
            const auto byte = static_cast<unsigned char>(m_buffer[begin]);
            if ((byte & 0xC0U) != 0x80U) {
                return begin + lengthOfCharacter(byte) > m_length ? begin : m_length;
            }
        }
        return m_length;
    }

private:
    std::span<char> m_buffer;
    std::size_t m_length{0};
    bool m_isCut{false};
};

struct Quotation {
    std::string_view opening; ///< empty: there is none
    std::string_view closing; ///< empty: the text ends within it
    std::size_t end{0};       ///< after the closing quote
};

/// The last of the closing quotes that does not stand within a word.
Quotation closed(std::string_view text, const Quotes& quotes, std::string_view opening)
{
    Quotation found{.opening = opening, .closing = {}, .end = text.size()};
    std::size_t best = opening.size();
    for (const std::string_view closing : quotes.closings) {
        std::size_t at = text.rfind(closing);
        while (at != std::string_view::npos && at >= best) {
            const std::size_t end = at + closing.size();
            if (end == text.size() || kAfterQuotation.find(text[end]) != std::string_view::npos) {
                found.closing = closing;
                found.end = end;
                best = at;
                break;
            }
            at = text.rfind(closing, at - 1);
        }
    }
    return found;
}

/// Whether a letter or digit, of whatever language, ends the text: what follows belongs to its
/// word.
bool endsWithinWord(std::string_view text)
{
    if (text.empty()) {
        return false;
    }
    std::size_t begin = text.size() - 1;
    while (begin > 0 && (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) {
        --begin;
    }
    const std::string_view last = text.substr(begin);
    if (last.size() == 1) {
        const bool isLetter = (last >= "a" && last <= "z") || (last >= "A" && last <= "Z");
        return isLetter || (last >= "0" && last <= "9");
    }
    // Signs of Latin 1, dashes and what else is general punctuation, signs of Asian languages.
    const bool isSign = (last >= "\xC2\xA0" && last <= "\xC2\xBF") ||
                        last.starts_with("\xE2\x80") || last.starts_with("\xE2\x81") ||
                        last.starts_with("\xE3\x80");
    return !isSign;
}

/// The quotation that begins at `at`.
Quotation quotationAt(std::string_view whole, std::size_t at)
{
    const std::string_view text = whole.substr(at);
    const bool isApostrophe = std::ranges::any_of(
        kApostrophes, [text](std::string_view quote) { return text.starts_with(quote); });
    if (isApostrophe && endsWithinWord(whole.substr(0, at))) {
        return {};
    }
    for (const Quotes& quotes : kQuotes) {
        for (const std::string_view opening : quotes.openings) {
            if (text.starts_with(opening)) {
                return closed(text, quotes, opening);
            }
        }
    }
    return {};
}

/// Whether a path goes on (or begins) with the slash at `slash`: one alone between blanks is none.
bool isOfPath(std::string_view text, std::size_t slash)
{
    const bool isAloneBefore = slash == 0 || text[slash - 1] == ' ';
    const bool isAloneAfter = slash + 1 == text.size() || text[slash + 1] == ' ';
    return !isAloneBefore || !isAloneAfter;
}

/// Whether a path begins with this word, which stands before its first slash: a root, a home or the
/// scheme of a URL.
bool isBeginOfPath(std::string_view word, std::string_view rest)
{
    return word.empty() || word.front() == '~' || (word.ends_with(':') && rest.starts_with("//"));
}

} // namespace

std::size_t PathRedaction::copyWithoutPaths(std::string_view text, std::span<char> buffer) noexcept
{
    Line line(buffer);
    std::size_t wordBegin = 0;
    std::size_t wordMark = 0;
    bool isAfterQuotation = false; // within the same word
    std::size_t sentenceMark = 0;
    std::size_t at = 0;
    while (at < text.size()) {
        const Quotation quotation = quotationAt(text, at);
        if (!quotation.opening.empty()) {
            line.append(quotation.opening);
            line.append("<text>");
            line.append(quotation.closing);
            at += quotation.end;
            wordBegin = at;
            isAfterQuotation = true;
            continue;
        }
        if (text[at] == '/' && isOfPath(text, at)) {
            const std::string_view word = text.substr(wordBegin, at - wordBegin);
            const bool isBegin = !isAfterQuotation && isBeginOfPath(word, text.substr(at));
            line.goBackTo(isBegin ? wordMark : sentenceMark);
            line.append("<path>");
            break;
        }
        line.append(text.substr(at, 1));
        ++at;
        if (kBeforeWord.find(text[at - 1]) != std::string_view::npos) {
            wordBegin = at;
            wordMark = line.mark();
            isAfterQuotation = false;
        }
        if (text.substr(0, at).ends_with(": ")) {
            sentenceMark = line.mark();
        }
    }
    return line.length();
}
