#pragma once

#include "Result.h"

#include <QString>
#include <QStringList>

/// Where this program keeps what belongs to a library but does not lie in it. Nothing is created.
namespace StateFolder
{

/// A folder name for the library at `canonicalPath` with that database uuid: a copy of a library
/// at another place is another library.
[[nodiscard]] QString keyOf(const QString& canonicalPath, const QString& databaseUuid);
/// Whether it is told where those folders lie: with neither HOME nor XDG_STATE_HOME they would lie
/// anywhere. `package`: for the message. Errors: NotWritable.
[[nodiscard]] Result<void> isKnown(const QString& package);
/// What keeps this program from its folder of lock and journal, which it needs to write to the
/// library at `package`; `cause` names the folder or file.
[[nodiscard]] Error unusable(const Error& cause, const QString& package);
/// The keys that libraries at `canonicalPath` had, whatever their databases' uuids, as far as there
/// are backups of them: for one whose databases do not tell theirs any more.
[[nodiscard]] QStringList keysWithBackups(const QString& canonicalPath);
/// Folder of lock and journal.
[[nodiscard]] QString ofLibrary(const QString& key);
/// Folder of the dated backups.
[[nodiscard]] QString ofBackups(const QString& key);

} // namespace StateFolder
