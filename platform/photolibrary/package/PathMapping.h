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

/// Where a master lies by its row.
struct MasterPlace {
    QString imagePath; ///< below Masters, or below the root of its volume
    bool isReference{false};
    QString volumeFolder{}; ///< of a referenced one: where its volume is here; empty: not at hand
};

/// Absolute path of a master, whether or not it exists. Empty for a referenced master whose volume
/// is not at hand, and for a path that leads out of the package or of the volume's folder.
[[nodiscard]] QString master(const QString& package, const MasterPlace& place);

} // namespace PathMapping
