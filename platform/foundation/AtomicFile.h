#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

/// Files that are either wholly there or not at all, also after a power cut. Any thread.
namespace AtomicFile
{

/// Whether an existing file may be replaced.
enum class Existing : quint8 { Replace, Refuse };

/// Writes beside the target under a temporary name (".NAME.XXXXXX.corvane-new"), flushes the
/// file, renames it into place and flushes the folder. Keeps the replaced file's permissions and,
/// where possible, owner and extended attributes. A symbolic link at `path` is followed, never
/// replaced. The folder must exist. What root makes anew, here and by makeFolder(), belongs to whom
/// the folder belongs to.
/// Errors: NotWritable, OutOfSpace (also quota), NotFound; the message names the file; on error
/// the target is as before and no temporary file stays.
[[nodiscard]] Result<void>
write(const QString& path, const QByteArray& bytes, Existing existing = Existing::Replace);

/// NAME in the temporary name of the file `name`: all of it, or of one that would make that too
/// long the begin, in whole characters.
[[nodiscard]] QByteArray nameInTemporary(const QByteArray& name);

/// Makes the folder and its missing parents and flushes what was made.
[[nodiscard]] Result<void> makeFolder(const QString& path);

/// Gives a file or folder the permissions of another and, where possible, its owner and extended
/// attributes. Links are followed; nothing is flushed.
[[nodiscard]] Result<void> takeOver(const QString& from, const QString& to);

/// What root has made anew belongs to whom its folder belongs to; otherwise nothing happens. A link
/// is not followed.
void giveToOwnerOfFolder(const QString& path);

/// Flushes a file's content to disk.
[[nodiscard]] Result<void> flushFile(const QString& path);

/// Flushes a folder's entries to disk.
[[nodiscard]] Result<void> flushFolder(const QString& path);

/// Flushes the folder and those above it on the same file system, so that its path outlasts a power
/// cut though another part of the program has only just made it. What may not be read cannot be
/// flushed and ends the way up.
[[nodiscard]] Result<void> flushWithParents(const QString& path);

/// "No space left", "Permission denied" and the like as an Error for `path` from errno.
[[nodiscard]] Error errorFromErrno(int errorNumber, const QString& action, const QString& path);

} // namespace AtomicFile
