#pragma once

#include "PropertyList.h"

#include <optional>

/// The two forms of a property list, each with a reader and a writer of its own. What the types
/// are and which errors there are is said in PropertyList.h.
///
/// Limits: containers nest at most kMaximumDepth deep, since every user of a list walks it by
/// recursion; a list that a binary file unfolds to (a container may be referred to many times)
/// holds at most kMaximumValues values. No list of a photo library comes near either.
namespace PropertyListForms
{

inline constexpr int kMaximumDepth = 512;
inline constexpr quint64 kMaximumValues = 10'000'000;

[[nodiscard]] Result<QVariant> readBinary(const QByteArray& bytes);
[[nodiscard]] Result<QVariant> readXml(const QByteArray& bytes);
/// As readXml(), several times as fast and without a copy of the whole text, for lists as programs
/// write them: nothing but elements and blanks, and neither dates nor data. Nothing for any other
/// list, be it damaged or only unusual: readXml() tells. Some entries may have been given away
/// then.
[[nodiscard]] std::optional<QVariant> readPlainXml(const QByteArray& bytes,
                                                   const PropertyList::GivenEntries& given = {});
[[nodiscard]] Result<QByteArray> writeBinary(const QVariant& root);
[[nodiscard]] Result<QByteArray> writeXml(const QVariant& root);

/// The value in one of the types that PropertyList.h names: other integer types, float and
/// QStringList become those; an invalid QVariant where there is no such form.
[[nodiscard]] QVariant normalised(const QVariant& value);

} // namespace PropertyListForms
