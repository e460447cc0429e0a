#pragma once

#include <QLatin1StringView>
#include <QString>

/// From the paths that a library's databases hold to files on this machine. Any thread.
namespace PathMapping
{

/// Absolute path of `relative` below a folder of the package ("Masters", "Previews", …), whether
/// or not the file exists. Names are looked up as the Mac's file system would: exactly, else in the
/// other Unicode normalisation, else without regard to case. Empty for a path that leads out of the
/// folder: absolute, with "..", or with NUL.
[[nodiscard]] QString
inside(const QString& package, QLatin1StringView folder, const QString& relative);

/// Absolute path of a master. Empty for a referenced master, whose volume is not at hand here, and
/// for a path that leads out of the package.
[[nodiscard]] QString master(const QString& package, const QString& imagePath, bool isReference);

} // namespace PathMapping
