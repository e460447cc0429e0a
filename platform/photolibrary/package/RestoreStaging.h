#pragma once

#include "Result.h"

#include <QLatin1StringView>
#include <QString>

#include <optional>

/// What a restore is to put in place, made whole in a folder of the package first. Thread: any,
/// with the writer's lock.
namespace RestoreStaging
{

/// In the package: what is to be put in place, then what was there before.
inline constexpr QLatin1StringView kFolder(".corvane-restore");
/// Of a package, and in that folder.
inline constexpr QLatin1StringView kDatabases("Database");
/// The same, of the mark beside the databases.
inline constexpr QLatin1StringView kMark("Database/.corvane-restore");

[[nodiscard]] QString folderIn(const QString& package);
/// Of a package, or of that folder.
[[nodiscard]] QString databasesIn(const QString& folder);
/// Beside those databases: a file that tells what a restore made from what was there before. It
/// holds the number of the last turn that the journal told of, in digits.
[[nodiscard]] QString markIn(const QString& folder);
/// That number; nothing where the mark cannot be read.
[[nodiscard]] std::optional<qint64> lastTurnOf(const QString& mark);

/// Whether the databases of a package can be exchanged: a copy cannot take the place of what lies
/// behind a link, since the link would be lost, or what it leads to would be written at once.
/// Error: NotWritable.
[[nodiscard]] Result<void> canTakeThePlace(const QString& package, const QString& copy);

/// Makes the folder with the databases of the copy at `copy` and with the mark, flushed. Each file
/// and folder gets owner, permissions and extended attributes of what it is to replace. Errors:
/// Damaged (the copy's databases are not whole), Unreadable, NotWritable, OutOfSpace.
[[nodiscard]] Result<void> make(const QString& package, const QString& copy, qint64 lastTurn);

} // namespace RestoreStaging
