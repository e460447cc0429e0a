#include "ExifTrimming.h"

#include "ImagePropertiesContent.h"
#include "MetadataAdapter.h"
#include "MetadataLosses.h"
#include "MetadataPruning.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

using namespace Qt::StringLiterals;

namespace
{

constexpr const char* kWholeMakerNote = "Exif.Photo.MakerNote";

/// Exiv2 leaves out tags above this size by itself when a block grows too large, without a word.
constexpr long kDropsAbove = 4096;

/// Parts of a maker note above this size are dumps for the maker's service, or pictures.
constexpr long kLargePart = 1024;

bool isPartOfMakerNote(const Exiv2::Exifdatum& datum)
{
    return MetadataPruning::isOfMakerNote(datum.groupName());
}

bool hasPartsOfMakerNote(const Exiv2::ExifData& exif)
{
    return std::any_of(exif.begin(), exif.end(), isPartOfMakerNote);
}

/// About as many bytes as the block will have. A decoded maker note is written from its parts.
qsizetype estimatedSize(const Exiv2::ExifData& exif)
{
    constexpr qsizetype kEntry = 12;
    const bool isDecoded = hasPartsOfMakerNote(exif);
    qsizetype size = 0;
    for (const Exiv2::Exifdatum& datum : exif) {
        if (!isDecoded || datum.key() != kWholeMakerNote) {
            size += kEntry + datum.size() + datum.sizeDataArea();
        }
    }
    return size;
}

/// Whether the block holds every large tag of `exif`.
bool isComplete(const Exiv2::Blob& block, const Exiv2::ExifData& exif)
{
    Exiv2::ExifData written;
    Exiv2::ExifParser::decode(written, block.data(), static_cast<uint32_t>(block.size()));
    return std::all_of(exif.begin(), exif.end(), [&](const Exiv2::Exifdatum& datum) {
        return datum.size() <= kDropsAbove ||
               (datum.key() == kWholeMakerNote && hasPartsOfMakerNote(exif)) ||
               written.findKey(Exiv2::ExifKey(datum.key())) != written.end();
    });
}

/// The part of `exif` that Exiv2 needs to write this tag of it.
Exiv2::ExifData neededFor(const Exiv2::Exifdatum& datum, const Exiv2::ExifData& exif)
{
    Exiv2::ExifData needed;
    if (!isPartOfMakerNote(datum)) {
        needed.add(datum);
        return needed;
    }
    for (const Exiv2::Exifdatum& other : exif) {
        const std::string key = other.key();
        if (isPartOfMakerNote(other) || key == kWholeMakerNote || key == "Exif.Image.Make" ||
            key == "Exif.Image.Model") {
            needed.add(other);
        }
    }
    return needed;
}

/// Whether Exiv2 leaves the tag out although there is room for it.
bool isLeftOut(const Exiv2::Exifdatum& datum,
               const ImageProperties::Content& content,
               qsizetype largest)
{
    const Exiv2::ExifData needed = neededFor(datum, content.exif);
    if (estimatedSize(needed) > largest) {
        return false;
    }
    Exiv2::Blob block;
    Exiv2::ExifParser::encode(block, content.byteOrder, needed);
    Exiv2::ExifData written;
    Exiv2::ExifParser::decode(written, block.data(), static_cast<uint32_t>(block.size()));
    return written.findKey(Exiv2::ExifKey(datum.key())) == written.end();
}

/// Takes out the large tags that Exiv2 leaves out whatever their size, and returns their names.
QStringList removeLeftOut(ImageProperties::Content& content, qsizetype largest)
{
    QStringList removed;
    Exiv2::ExifData& exif = content.exif;
    for (auto datum = exif.begin(); datum != exif.end();) {
        const bool isLarge = datum->size() > kDropsAbove && datum->key() != kWholeMakerNote;
        bool isUnwritable = false;
        if (isLarge) {
            static_cast<void>(MetadataAdapter::attempt(
                [&] { isUnwritable = isLeftOut(*datum, content, largest); }));
        }
        if (isUnwritable) {
            removed.append(QString::fromStdString(datum->key()));
        }
        datum = isUnwritable ? exif.erase(datum) : std::next(datum);
    }
    return removed;
}

/// Takes out the tags at which Exiv2 gives up the whole block, and returns their names.
QStringList removeRefused(ImageProperties::Content& content)
{
    QStringList removed;
    Exiv2::ExifData accepted;
    for (const Exiv2::Exifdatum& datum : content.exif) {
        Exiv2::ExifData tried = accepted;
        Exiv2::Blob block;
        const bool isWritten = MetadataAdapter::attempt([&] {
            tried.add(datum);
            Exiv2::ExifParser::encode(block, content.byteOrder, tried);
        });
        if (isWritten) {
            accepted = std::move(tried);
        } else {
            removed.append(QString::fromStdString(datum.key()));
        }
    }
    content.exif = std::move(accepted);
    return removed;
}

bool hasGroup(const Exiv2::ExifData& exif, std::string_view group)
{
    return std::any_of(exif.begin(), exif.end(), [group](const Exiv2::Exifdatum& datum) {
        return datum.groupName() == group;
    });
}

bool isSmaller(const Exiv2::Exifdatum& left, const Exiv2::Exifdatum& right)
{
    return left.size() < right.size();
}

QString takeOut(Exiv2::ExifData& exif, Exiv2::ExifData::iterator datum)
{
    QString key = QString::fromStdString(datum->key());
    exif.erase(datum);
    return key;
}

/// The largest part of the maker note while there are large ones, then the note.
QString trimMakerNote(ImageProperties::Content& content)
{
    Exiv2::ExifData& exif = content.exif;
    auto largest = exif.end();
    for (auto datum = exif.begin(); datum != exif.end(); ++datum) {
        if (isPartOfMakerNote(*datum) && datum->size() > kLargePart &&
            (largest == exif.end() || isSmaller(*largest, *datum))) {
            largest = datum;
        }
    }
    if (largest != exif.end()) {
        return takeOut(exif, largest);
    }
    MetadataPruning::removeMakerNote(content);
    return u"the maker note"_s;
}

/// Takes the least useful part out and returns its name; nothing where nothing is left.
QString trimExif(ImageProperties::Content& content)
{
    Exiv2::ExifData& exif = content.exif;
    if (hasGroup(exif, "Thumbnail")) {
        Exiv2::ExifThumb(exif).erase();
        return u"the thumbnail"_s;
    }
    if (hasPartsOfMakerNote(exif) || exif.findKey(Exiv2::ExifKey(kWholeMakerNote)) != exif.end()) {
        return trimMakerNote(content);
    }
    const auto largest = std::max_element(exif.begin(), exif.end(), isSmaller);
    return largest == exif.end() ? QString() : takeOut(exif, largest);
}

} // namespace

namespace ExifTrimming
{

QByteArray encode(ImageProperties::Content& content, qsizetype largest)
{
    // The estimate leaves out headers and padding of the directories.
    constexpr qsizetype kMargin = 2048;
    QStringList trimmed;
    QStringList unwritable;
    Exiv2::Blob block;
    bool isSifted = false;
    while (!content.exif.empty()) {
        bool isWhole = false;
        const bool isWritten = MetadataAdapter::attempt([&] {
            Exiv2::ExifParser::encode(block, content.byteOrder, content.exif);
            isWhole =
                std::ssize(block) <= largest && (estimatedSize(content.exif) <= largest - kMargin ||
                                                 isComplete(block, content.exif));
        });
        if (isWhole) {
            break;
        }
        block.clear();
        if (!isSifted) {
            // A single tag that cannot be written must not cost those that can.
            isSifted = true;
            unwritable = isWritten ? removeLeftOut(content, largest) : removeRefused(content);
            if (!unwritable.isEmpty()) {
                continue;
            }
        }
        trimmed.append(trimExif(content));
    }
    MetadataLosses::logUnwritable(u"Exif"_s, content.name, unwritable);
    MetadataLosses::logTooLarge(u"Exif"_s, content.name, trimmed);
    return {reinterpret_cast<const char*>(block.data()), std::ssize(block)};
}

} // namespace ExifTrimming
