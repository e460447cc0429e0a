#pragma once

#include "Result.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <functional>

/// Apple property lists, XML and binary. Every number and date is kept to its last bit in the
/// binary form; the XML form tells dates to the second and has no control characters.
///
/// Types: dictionary = QVariantMap, array = QVariantList, string = QString, integer = qlonglong
/// (qulonglong when it does not fit), real = double, boolean = bool, data = QByteArray,
/// date = PropertyList::Date, keyed-archive uid = PropertyList::Uid.
namespace PropertyList
{

/// A date in a property list: seconds since 2001-01-01T00:00:00 UTC, with fractions.
struct Date {
    double secondsSince2001{0.0};
    friend bool operator==(const Date&, const Date&) = default;
};

/// A reference inside a keyed archive.
struct Uid {
    quint64 value{0};
    friend bool operator==(const Uid&, const Uid&) = default;
};

/// What a list about one thing stays below: settings, or an album with hundreds of thousands of
/// photos.
inline constexpr qint64 kMostBytes = qint64{64} * 1024 * 1024;
/// The same of a catalogue of a whole library, which takes about a kilobyte a photo.
inline constexpr qint64 kMostBytesOfCatalogue = qint64{2} * 1024 * 1024 * 1024;

/// Entries that are too many to keep all at once.
struct GivenEntries {
    QString key; ///< of the dictionary that holds them, itself an entry of the list's own one
    /// Takes one. They come in any order, and some twice where a list turns out not to be as
    /// programs write it; what was taken counts only when the whole was read.
    std::function<void(const QString& key, const QVariant& value)> taken;
};

/// Parses either form (recognised by its content). What is `given` is not kept: an empty dictionary
/// stands in its place.
/// Errors: Damaged for bytes that are no property list; never crashes on hostile input.
[[nodiscard]] Result<QVariant> parse(const QByteArray& bytes, const GivenEntries& given = {});
/// As parse(), of a whole file of at most `mostBytes`. Errors: NotFound, Unreadable, Damaged; the
/// message names the file.
[[nodiscard]] Result<QVariant> read(const QString& path, qint64 mostBytes = kMostBytes);

/// Other integer types, float and QStringList are written as what they amount to.
/// Errors: Unsupported for a value of a type not named above.
[[nodiscard]] Result<QByteArray> toXml(const QVariant& value);
[[nodiscard]] Result<QByteArray> toBinary(const QVariant& value);

} // namespace PropertyList

Q_DECLARE_METATYPE(PropertyList::Date)
Q_DECLARE_METATYPE(PropertyList::Uid)
