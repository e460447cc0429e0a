#include "PathRedaction.h"

#include <algorithm>

namespace
{

constexpr std::string_view kReplacement = "<path>";
constexpr std::string_view kQuotes = "\"'`";
/// What can stand right before a path and be no part of it.
constexpr std::string_view kBeforePath = " \t\r\n\"'`()[]{}<>=,;|";

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

/// The place of the first slash that is not alone between blanks; npos when there is none.
std::size_t slashOfPath(std::string_view text)
{
    for (std::size_t at = text.find('/'); at != text.npos; at = text.find('/', at + 1)) {
        const bool isAloneBefore = at == 0 || text[at - 1] == ' ';
        const bool isAloneAfter = at + 1 == text.size() || text[at + 1] == ' ';
        if (!isAloneBefore || !isAloneAfter) {
            return at;
        }
    }
    return text.npos;
}

/// Where the path begins that has its first slash at `slash`.
std::size_t beginOfPath(std::string_view text, std::size_t slash)
{
    const std::string_view before = text.substr(0, slash);
    // An open quotation holds nothing but the path, which may begin with a name of several words.
    const bool isQuotationOpen = std::ranges::count(before, '"') % 2 == 1;
    const std::size_t last = isQuotationOpen ? before.rfind('"') : before.find_last_of(kBeforePath);
    return last == before.npos ? 0 : last + 1;
}

} // namespace

std::size_t PathRedaction::copyWithoutPaths(std::string_view text, std::span<char> buffer) noexcept
{
    Line line(buffer);
    while (true) {
        const std::size_t slash = slashOfPath(text);
        if (slash == text.npos) {
            line.append(text);
            return line.length();
        }
        const std::size_t begin = beginOfPath(text, slash);
        line.append(text.substr(0, begin));
        line.append(kReplacement);
        const bool isQuoted = begin > 0 && kQuotes.find(text[begin - 1]) != kQuotes.npos;
        const std::size_t end = isQuoted ? text.rfind(text[begin - 1]) : text.npos;
        if (end == text.npos || end < slash) {
            return line.length();
        }
        line.append(text.substr(end, 1));
        text.remove_prefix(end + 1);
    }
}
