#pragma once

#include <QString>
#include <QStringList>

/// Looks for library packages, by their content.
namespace LibraryFinder
{

/// Whether the folder is an iPhoto library package. Reads a few small files; any thread.
[[nodiscard]] bool isLibrary(const QString& path);

/// Whether the folder is one by its name or its content, sound or not: a person who picks it means
/// the library, and is told what is wrong with it. Any thread.
[[nodiscard]] bool looksLikeLibrary(const QString& path);

/// Absolute paths of the packages in a folder and in the folders directly below it that are no
/// packages; sorted by name.
[[nodiscard]] QStringList librariesIn(const QString& folder);

} // namespace LibraryFinder
