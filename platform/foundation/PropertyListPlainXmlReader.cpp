#include "PropertyListForms.h"

#include <QByteArrayView>
#include <QHash>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

using namespace PropertyListForms;

bool holds(std::string_view text, std::string_view token)
{
    return text.find(token) != std::string_view::npos;
}

/// Whether there are control characters. It looks at all bytes without a branch, so that the
/// processor takes many at once.
bool hasControl(std::string_view text)
{
    unsigned found = 0;
    for (const char byte : text) {
        found |= static_cast<unsigned>(static_cast<unsigned char>(byte) < 0x20) &
                 static_cast<unsigned>(byte != '\t') & static_cast<unsigned>(byte != '\n');
    }
    return found != 0;
}

/// Whether the bytes are free of all that a general reader of XML would look into: other encodings,
/// control characters, line ends of other systems, and what no XML may hold. A catalogue has a
/// hundred megabytes, in which std::string_view finds rare bytes far faster than Qt's views do.
bool isPlain(QByteArrayView bytes)
{
    const std::string_view text(bytes.data(), static_cast<std::size_t>(bytes.size()));
    return !hasControl(text) && bytes.isValidUtf8() && !holds(text, "\xEF\xBF\xBE") &&
           !holds(text, "\xEF\xBF\xBF") && !holds(text, "]]>");
}

/// Reads the elements one after another. Whatever is not as programs write it ends the whole.
class PlainReader final
{
public:
    /// `given`: the entries that are not kept.
    PlainReader(QByteArrayView bytes, const PropertyList::GivenEntries& given)
        : m_rest(bytes)
        , m_given(given)
    {
    }

    [[nodiscard]] std::optional<QVariant> read()
    {
        constexpr std::array kTypes{
            QByteArrayView("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\""
                           " \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"),
            QByteArrayView("<!DOCTYPE plist PUBLIC \"-//Apple Computer//DTD PLIST 1.0//EN\""
                           " \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">")};
        const bool hasHead = take("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
        skipBlanks();
        if (std::ranges::any_of(kTypes, [this](QByteArrayView type) { return take(type); })) {
            skipBlanks();
        }
        if (!hasHead || !take("<plist version=\"1.0\">")) {
            return std::nullopt;
        }
        skipBlanks();
        QVariant root;
        if (!readValue(root, 0)) {
            return std::nullopt;
        }
        skipBlanks();
        if (!take("</plist>")) {
            return std::nullopt;
        }
        skipBlanks();
        return m_rest.isEmpty() ? std::optional(std::move(root)) : std::nullopt;
    }

private:
    bool take(QByteArrayView token)
    {
        if (!m_rest.startsWith(token)) {
            return false;
        }
        m_rest = m_rest.sliced(token.size());
        return true;
    }

    void skipBlanks()
    {
        const auto* const end = std::ranges::find_if_not(
            m_rest, [](char byte) { return byte == ' ' || byte == '\t' || byte == '\n'; });
        m_rest = m_rest.sliced(end - m_rest.begin());
    }

    /// The text up to the end tag, which is taken too.
    [[nodiscard]] std::optional<QByteArrayView> takeUntil(QByteArrayView endTag)
    {
        const qsizetype length = m_rest.indexOf('<');
        if (length < 0 || !m_rest.sliced(length).startsWith(endTag)) {
            return std::nullopt;
        }
        const QByteArrayView text = m_rest.first(length);
        m_rest = m_rest.sliced(length + endTag.size());
        return text;
    }

    [[nodiscard]] bool readValue(QVariant& value, int depth)
    {
        if (depth >= kMaximumDepth) {
            return false;
        }
        if (take("<string>")) {
            return readString(value);
        }
        if (take("<integer>")) {
            return readInteger(value);
        }
        if (take("<real>")) {
            return readReal(value);
        }
        if (take("<dict>")) {
            return readDictionary(value, depth);
        }
        if (take("<array>")) {
            return readArray(value, depth);
        }
        const bool isTrue = take("<true/>");
        value = isTrue;
        return isTrue || take("<false/>");
    }

    [[nodiscard]] bool readArray(QVariant& value, int depth)
    {
        QVariantList items;
        for (skipBlanks(); !take("</array>"); skipBlanks()) {
            QVariant item;
            if (!readValue(item, depth + 1)) {
                return false;
            }
            items.append(std::move(item));
        }
        value = items;
        return true;
    }

    [[nodiscard]] bool readDictionary(QVariant& value, int depth)
    {
        QVariantMap entries;
        const bool isRead = readEntries(
            depth, [&](const QString& key, const QVariant& entry) { entries.insert(key, entry); });
        value = entries;
        return isRead;
    }

    /// Gives each entry to `taken`.
    template <typename Taken>
    [[nodiscard]] bool readEntries(int depth, const Taken& taken)
    {
        for (skipBlanks(); !take("</dict>"); skipBlanks()) {
            const std::optional<QByteArrayView> key =
                take("<key>") ? takeUntil("</key>") : std::nullopt;
            // References of keyed archives are not read here.
            if (!key || key->isEmpty() || *key == "CF$UID" || key->contains('&')) {
                return false;
            }
            skipBlanks();
            QVariant entry;
            const QString name = keyOf(*key);
            if (depth == 0 && m_given.taken && name == m_given.key && take("<dict>")) {
                entry = QVariantMap();
                if (!readEntries(depth + 1, m_given.taken)) {
                    return false;
                }
            } else if (!readValue(entry, depth + 1)) {
                return false;
            }
            taken(name, entry);
        }
        return true;
    }

    /// Records of one kind share their keys.
    [[nodiscard]] QString keyOf(QByteArrayView bytes)
    {
        constexpr qsizetype kKinds = 256;
        const auto known = m_keys.constFind(bytes);
        if (known != m_keys.cend()) {
            return *known;
        }
        QString key = QString::fromUtf8(bytes);
        if (m_keys.size() < kKinds) {
            m_keys.insert(bytes, key);
        }
        return key;
    }

    [[nodiscard]] bool readString(QVariant& value)
    {
        const std::optional<QByteArrayView> text = takeUntil("</string>");
        if (!text) {
            return false;
        }
        if (text->isEmpty()) {
            value = u""_s;
            return true;
        }
        if (!text->contains('&')) {
            value = QString::fromUtf8(*text);
            return true;
        }
        return unescape(*text, value);
    }

    [[nodiscard]] static bool unescape(QByteArrayView text, QVariant& value)
    {
        constexpr std::array kEntities{std::pair{QByteArrayView("&amp;"), '&'},
                                       std::pair{QByteArrayView("&lt;"), '<'},
                                       std::pair{QByteArrayView("&gt;"), '>'},
                                       std::pair{QByteArrayView("&apos;"), '\''},
                                       std::pair{QByteArrayView("&quot;"), '"'}};
        QByteArray plain;
        plain.reserve(text.size());
        while (!text.isEmpty()) {
            if (text.front() != '&') {
                const qsizetype next = text.indexOf('&');
                const qsizetype length = next < 0 ? text.size() : next;
                plain += text.first(length);
                text = text.sliced(length);
                continue;
            }
            const auto* const entity = std::ranges::find_if(
                kEntities, [&](const auto& candidate) { return text.startsWith(candidate.first); });
            if (entity == kEntities.end()) {
                return false;
            }
            plain += entity->second;
            text = text.sliced(entity->first.size());
        }
        value = QString::fromUtf8(plain);
        return true;
    }

    [[nodiscard]] bool readInteger(QVariant& value)
    {
        const std::optional<QByteArrayView> text = takeUntil("</integer>");
        qlonglong number = 0;
        if (!text) {
            return false;
        }
        const auto [end, error] = std::from_chars(text->begin(), text->end(), number);
        value = number;
        return error == std::errc() && end == text->end();
    }

    [[nodiscard]] bool readReal(QVariant& value)
    {
        constexpr QByteArrayView kDigits("0123456789.");
        const std::optional<QByteArrayView> text = takeUntil("</real>");
        if (!text || text->isEmpty()) {
            return false;
        }
        const bool isNegative = text->front() == '-';
        const QByteArrayView digits = isNegative ? text->sliced(1) : *text;
        const bool isPlainNumber =
            std::ranges::all_of(digits, [&](char digit) { return kDigits.contains(digit); });
        bool isNumber = false;
        const double number = isPlainNumber ? digits.toDouble(&isNumber) : 0.0;
        value = isNegative ? -number : number;
        return isNumber;
    }

    QByteArrayView m_rest;
    const PropertyList::GivenEntries& m_given;
    QHash<QByteArrayView, QString> m_keys; ///< of what is read, which outlives the reader
};

} // namespace

std::optional<QVariant> PropertyListForms::readPlainXml(const QByteArray& bytes,
                                                        const PropertyList::GivenEntries& given)
{
    return isPlain(bytes) ? PlainReader(bytes, given).read() : std::nullopt;
}
