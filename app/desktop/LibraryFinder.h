#pragma once

#include <QString>
#include <QStringList>

/// Looks for library packages, by their content.
namespace LibraryFinder
{

/// Whether the folder is an iPhoto library package. Reads a few small files; any thread.
[[nodiscard]] bool isLibrary(const QString& path);

/// Absolute paths of the packages in a folder and in the folders directly below it that are no
/// packages; sorted by name.
[[nodiscard]] QStringList librariesIn(const QString& folder);

} // namespace LibraryFinder
