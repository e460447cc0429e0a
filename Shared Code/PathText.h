#pragma once

#include <QString>
#include <QStringList>

/// Paths as texts: nothing is looked up on disk, "%" is never decoded. Any thread.
namespace PathText
{

/// The parts of a path: a leading "/" counts as one, empty ones do not count. "/a//b/c.jpg" has
/// four: "/", "a", "b", "c.jpg". A null path has none.
[[nodiscard]] QStringList components(const QString& path);

/// What follows the last dot of the last part, without the dot; empty where there is none and
/// where the dot is the part's first character (".profile").
[[nodiscard]] QString extension(const QString& path);

/// The path without its extension and the dot before it; "IMG.1.cr2" becomes "IMG.1".
[[nodiscard]] QString withoutExtension(const QString& path);

} // namespace PathText
