#include "XmpEffort.h"

#include "TiffStructure.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace
{

/// What has room in a segment of a JPEG file takes half a second at most, whatever it holds.
constexpr qsizetype kSmallPacket = 65536;

constexpr std::size_t kMostBearableParts = 50'000;
constexpr std::size_t kMostBearableComparisons = 5000UL * 5000UL;

/// Counts the elements and attributes of a packet. What is no XML is refused by the toolkit at the
/// same place, or earlier.
class XmpPartCount final
{
public:
    explicit XmpPartCount(std::string_view packet)
        : m_packet(packet)
    {
    }

    [[nodiscard]] bool isBounded()
    {
        for (m_at = m_packet.find('<'); m_at < m_packet.size(); m_at = m_packet.find('<', m_at)) {
            const std::string_view rest = m_packet.substr(m_at);
            if (rest.starts_with("<!--")) {
                skipPast("-->");
            } else if (rest.starts_with("<![CDATA[")) {
                skipPast("]]>");
            } else if (rest.starts_with("<?")) {
                skipPast("?>");
            } else if (rest.starts_with("<!")) {
                return false;
            } else if (rest.starts_with("</")) {
                skipPast(">");
                leave();
            } else {
                enter();
            }
            if (m_parts > kMostBearableParts || m_comparisons > kMostBearableComparisons) {
                return false;
            }
        }
        return true;
    }

private:
    struct Element {
        std::size_t fields{0};
        bool isRdf{false};   ///< it is rdf:RDF
        bool isInRdf{false}; ///< it, or one around it, is
        /// Its fields are properties, which are looked for among those of all such elements: it is
        /// an rdf:Description right below rdf:RDF, or stands around one.
        bool isOuter{true};
    };

    /// Whatever prefix it has.
    static bool isCalled(std::string_view name, std::string_view local)
    {
        return name.ends_with(local) &&
               (name.size() == local.size() || name[name.size() - local.size() - 1] == ':');
    }

    void skipPast(std::string_view end)
    {
        const std::size_t found = m_packet.find(end, m_at);
        m_at = found == std::string_view::npos ? m_packet.size() : found + end.size();
    }

    /// Of the element that is open.
    std::size_t& fields()
    {
        return m_open.empty() || m_open.back().isOuter ? m_properties : m_open.back().fields;
    }

    void addFields(std::size_t more)
    {
        std::size_t& count = fields();
        // As many as lie between the squares; those of properties are never closed.
        m_comparisons += more * (2 * count + more);
        count += more;
    }

    void enter()
    {
        const std::size_t nameEnd =
            std::min(m_packet.find_first_of(" \t\r\n/>", m_at), m_packet.size());
        const std::string_view name = m_packet.substr(m_at + 1, nameEnd - m_at - 1);
        m_at = nameEnd;
        const std::size_t attributes = skipAttributes();
        m_parts += 1 + attributes;
        // The items of a list are found by their number.
        addFields(isCalled(name, "li") ? 0 : 1);
        m_open.push_back(opened(name));
        addFields(attributes);
        if (m_packet.substr(0, m_at).ends_with("/>")) {
            leave();
        }
    }

    [[nodiscard]] Element opened(std::string_view name) const
    {
        const bool isRdf = isCalled(name, "RDF");
        const Element around = m_open.empty() ? Element() : m_open.back();
        return {.isRdf = isRdf,
                .isInRdf = isRdf || around.isInRdf,
                .isOuter = isRdf || !around.isInRdf || around.isRdf};
    }

    /// To the end of the tag.
    std::size_t skipAttributes()
    {
        std::size_t count = 0;
        while (m_at < m_packet.size() && m_packet[m_at] != '>') {
            const char mark = m_packet[m_at];
            count += mark == '=' ? 1 : 0;
            ++m_at;
            if (mark == '"' || mark == '\'') {
                skipPast({&mark, 1});
            }
        }
        m_at = std::min(m_at + 1, m_packet.size());
        return count;
    }

    void leave()
    {
        if (!m_open.empty()) {
            m_open.pop_back();
        }
    }

    std::string_view m_packet;
    std::size_t m_at{0};
    std::vector<Element> m_open;
    std::size_t m_properties{0};
    std::size_t m_parts{0};
    std::size_t m_comparisons{0};
};

/// UTF-16 or UTF-32.
bool isOfWideCharacters(std::string_view packet)
{
    return packet.substr(0, 4).find('\0') != std::string_view::npos ||
           packet.starts_with("\xFE\xFF") || packet.starts_with("\xFF\xFE");
}

} // namespace

bool XmpEffort::isBearable(QByteArrayView packet)
{
    const std::string_view text(packet.data(), static_cast<std::size_t>(packet.size()));
    return packet.size() <= kSmallPacket ||
           (packet.size() <= kLargestPacket && !isOfWideCharacters(text) &&
            XmpPartCount(text).isBounded());
}

QByteArray XmpEffort::withoutUnbearable(QByteArrayView file)
{
    constexpr qsizetype kCountOfEntry = 4;
    const auto tiff = TiffStructure::parse(file);
    if (!tiff || tiff->directories().isEmpty()) {
        return {};
    }
    // Exiv2 reads each packet of the first directory, and none of the others.
    const QList<TiffXmp> all = tiff->directories().first().xmp;
    const auto isBearableIn = [file](const ByteRange& packet) {
        return isBearable(file.sliced(static_cast<qsizetype>(packet.offset),
                                      static_cast<qsizetype>(packet.length)));
    };
    if (all.isEmpty() || (all.size() == 1 && isBearableIn(all.first().packet))) {
        return {};
    }
    QByteArray cleared = file.toByteArray();
    for (const TiffXmp& xmp : all) {
        std::fill_n(cleared.data() + xmp.entry + kCountOfEntry, sizeof(quint32), '\0');
    }
    return cleared;
}
