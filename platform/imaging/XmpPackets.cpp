#include "XmpPackets.h"

#include "ExtendedXmp.h"
#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"
#include "MetadataLosses.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

using Names = std::set<std::string, std::less<>>;
using Encoder = std::function<std::optional<QByteArray>(const Exiv2::XmpData&)>;

/// Nothing where the toolkit refuses it.
std::optional<QByteArray> packetOf(const Exiv2::XmpData& xmp, uint16_t moreFlags = 0)
{
    constexpr uint32_t kNoPadding = 0;
    const auto flags = static_cast<uint16_t>(Exiv2::XmpParser::useCompactFormat | moreFlags);
    std::string packet;
    int refused = 1;
    static_cast<void>(MetadataAdapter::attempt(
        [&] { refused = Exiv2::XmpParser::encode(packet, xmp, flags, kNoPadding); }));
    return refused == 0 ? std::optional(QByteArray::fromStdString(packet)) : std::nullopt;
}

/// With a note as long as that of the second packet will be.
std::optional<QByteArray> notedPacketOf(Exiv2::XmpData xmp)
{
    ExtendedXmp::note(xmp, {});
    return packetOf(xmp);
}

/// The second packet is found by its segments, and has no wrapper to be found by.
std::optional<QByteArray> extendedPacketOf(const Exiv2::XmpData& xmp)
{
    return packetOf(xmp, Exiv2::XmpParser::omitPacketWrapper);
}

/// The toolkit refuses a whole packet for one property that it does not take. Removes the
/// properties that it does not take even alone, and returns their names.
QStringList removeRefused(Exiv2::XmpData& xmp)
{
    std::map<std::string, Exiv2::XmpData, std::less<>> properties;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        properties[std::string(MetadataData::propertyOf(datum.key()))].add(datum);
    }
    Names refused;
    QStringList names;
    for (const auto& [property, alone] : properties) {
        if (!packetOf(alone)) {
            refused.insert(property);
            names.append(QString::fromStdString(property));
        }
    }
    MetadataData::eraseWhere(xmp, [&](const Exiv2::Xmpdatum& datum) {
        return refused.contains(MetadataData::propertyOf(datum.key()));
    });
    return names;
}

/// At least so many bytes of the packet are this part's: what its element says, without markup and
/// the names of the elements around it.
qsizetype estimatedSize(const Exiv2::Xmpdatum& datum)
{
    const std::string key = datum.key();
    return std::max<qsizetype>(datum.size(), 0) +
           std::ssize(key.substr(key.find_last_of("./") + 1));
}

qsizetype estimatedSize(const Exiv2::XmpData& xmp)
{
    return std::accumulate(
        xmp.begin(), xmp.end(), qsizetype{0}, [](qsizetype sum, const Exiv2::Xmpdatum& datum) {
            return sum + estimatedSize(datum);
        });
}

struct XmpProperty {
    std::string name;
    qsizetype size{0}; ///< estimated
};

/// The largest first.
std::vector<XmpProperty> propertiesBySize(const Exiv2::XmpData& xmp)
{
    std::map<std::string, qsizetype, std::less<>> sizes;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        sizes[std::string(MetadataData::propertyOf(datum.key()))] += estimatedSize(datum);
    }
    std::vector<XmpProperty> properties;
    properties.reserve(sizes.size());
    for (const auto& [name, size] : sizes) {
        properties.push_back({.name = name, .size = size});
    }
    std::ranges::stable_sort(properties, std::greater(), &XmpProperty::size);
    return properties;
}

/// Moves the largest properties, with all their parts, to `rest` until those that remain are
/// estimated at `room` or less.
void moveLargest(Exiv2::XmpData& xmp, qsizetype room, Exiv2::XmpData& rest)
{
    qsizetype remaining = estimatedSize(xmp);
    if (remaining <= room) {
        return;
    }
    Names moved;
    for (const XmpProperty& property : propertiesBySize(xmp)) {
        if (remaining <= room) {
            break;
        }
        remaining -= property.size;
        moved.insert(property.name);
    }
    Exiv2::XmpData kept;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        Exiv2::XmpData& target =
            moved.contains(MetadataData::propertyOf(datum.key())) ? rest : kept;
        target.add(datum);
    }
    xmp = kept;
}

/// Moves the largest properties to `rest` until those that remain make a packet of `largest` bytes
/// at most, which it returns.
QByteArray moveUntilFitting(Exiv2::XmpData& xmp,
                            qsizetype largest,
                            const Encoder& encode,
                            Exiv2::XmpData& rest)
{
    // Markup makes a packet larger than its estimate by a factor that each round knows better.
    constexpr int kRoundsByFactor = 4;
    // What even the estimate shows to be too much goes before the first packet is made: the time
    // for that grows with the square of the number of properties.
    qsizetype room = largest;
    moveLargest(xmp, room, rest);
    std::optional<QByteArray> packet = encode(xmp);
    for (int round = 0; !xmp.empty() && !(packet && packet->size() <= largest); ++round) {
        const qsizetype estimate = estimatedSize(xmp);
        const qsizetype fitting =
            packet ? std::min(estimate * largest / packet->size(), estimate - 1) : estimate / 2;
        room = round < kRoundsByFactor ? fitting : std::min(fitting, room / 2);
        moveLargest(xmp, room, rest);
        packet = encode(xmp);
    }
    return packet.value_or(QByteArray());
}

/// The fields of each structure of a property. Those of lists have numbers, and none is looked for
/// by its name.
using Structures = std::map<std::string, std::size_t, std::less<>>;

/// By property.
std::map<std::string, Structures, std::less<>> structuresOf(const Exiv2::XmpData& xmp)
{
    std::map<std::string, Structures, std::less<>> structures;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        const std::string key = datum.key();
        Structures& ofProperty = structures[std::string(MetadataData::propertyOf(key))];
        const std::size_t end = key.find_last_of('/');
        if (end != std::string::npos && !key.ends_with(']')) {
            ++ofProperty[key.substr(0, end)];
        }
    }
    return structures;
}

/// The toolkit looks for each field among those before it.
std::size_t comparisonsFor(const Structures& structures)
{
    return std::accumulate(
        structures.begin(), structures.end(), std::size_t{0}, [](std::size_t sum, const auto& one) {
            return sum + one.second * one.second;
        });
}

/// Exiv2's time for a packet grows with the square of the number of properties, and of that of the
/// fields in a structure. No program states so many; those beyond go to `lost`.
void boundProperties(Exiv2::XmpData& xmp, Exiv2::XmpData& lost)
{
    constexpr std::size_t kMostComparisons =
        XmpPackets::kMostProperties * XmpPackets::kMostProperties;
    const auto structures = structuresOf(xmp);
    std::size_t comparisons = 0;
    Names kept;
    Names refused;
    Exiv2::XmpData first;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        const auto property = std::string(MetadataData::propertyOf(datum.key()));
        if (!kept.contains(property) && !refused.contains(property)) {
            const std::size_t more = comparisonsFor(structures.at(property));
            const bool hasRoom =
                kept.size() < XmpPackets::kMostProperties && more <= kMostComparisons - comparisons;
            comparisons += hasRoom ? more : 0;
            (hasRoom ? kept : refused).insert(property);
        }
        (kept.contains(property) ? first : lost).add(datum);
    }
    xmp = first;
}

QStringList namesOf(const Exiv2::XmpData& xmp)
{
    Names names;
    for (const Exiv2::Xmpdatum& datum : xmp) {
        names.emplace(MetadataData::propertyOf(datum.key()));
    }
    QStringList texts;
    for (const std::string& name : names) {
        texts.append(QString::fromStdString(name));
    }
    return texts;
}

} // namespace

XmpPackets::Packets
XmpPackets::encode(Exiv2::XmpData xmp, const QString& name, const Limits& limits)
{
    Exiv2::XmpData tooMany;
    boundProperties(xmp, tooMany);
    MetadataLosses::logTooMany(u"XMP"_s, name, XmpPackets::kMostProperties, namesOf(tooMany));
    std::optional<QByteArray> whole = packetOf(xmp);
    if (!whole) {
        MetadataLosses::logUnwritable(u"XMP"_s, name, removeRefused(xmp));
        whole = packetOf(xmp);
    }
    if (whole && whole->size() <= limits.main) {
        return {.main = *whole, .extended = {}};
    }
    Exiv2::XmpData rest;
    Exiv2::XmpData lost;
    moveUntilFitting(xmp, limits.main, notedPacketOf, rest);
    const QByteArray extended = moveUntilFitting(rest, limits.extended, extendedPacketOf, lost);
    MetadataLosses::logTooLarge(u"XMP"_s, name, namesOf(lost));
    if (!extended.isEmpty()) {
        ExtendedXmp::note(xmp, extended);
    }
    return {.main = packetOf(xmp).value_or(QByteArray()), .extended = extended};
}
