#pragma once

#include "Result.h"
#include "TurnJournal.h"

#include <QString>
#include <QStringList>

/// Puts a dated copy of databases and catalogues in the place of those of a library. The copy is
/// made whole in a folder of the package, ".corvane-restore", and takes its place in one step, so
/// that a kill at any moment leaves the library as it was or as it is to be. A note in the folder
/// of lock and journal tells that the folder in the package is this program's own. Thread: any,
/// with the writer's lock but where it says otherwise.
namespace LibraryRestore
{

/// Makes what is to be put in place from the copy at `copy` (RestoreStaging). Errors: Damaged,
/// Unreadable, NotWritable (also where databases lie behind a link), OutOfSpace; then nothing is
/// left of it.
[[nodiscard]] Result<void>
stage(const QString& package, const QString& stateFolder, const QString& copy);
/// Puts it in place: the databases at once, then the catalogues. One that cannot be put there, or
/// that the copy does not hold, is made anew from the databases. Returns a sentence for each that
/// does not follow them all the same. Errors: NotWritable, and the library is as it was.
[[nodiscard]] Result<QStringList> putInPlace(const QString& package, const QString& copy);
/// Removes what stage() made, or a restore that was cut off left, and after putInPlace() what was
/// there before. Where databases isInPlace() the note stays, as it does for the next run where not
/// all could be removed: then returns a sentence that tells what is left, else nothing. Errors:
/// what was put in place could not be flushed; then all stays.
[[nodiscard]] Result<QString> sweep(const QString& package, const QString& stateFolder);
/// Whether the databases in the package were put in place and the catalogues may not have followed
/// yet: each run that writes to the library makes them follow, until followed().
[[nodiscard]] bool isInPlace(const QString& package, const QString& stateFolder);
/// The turns that the journal tells of, without those that were noted before databases were put in
/// place: what they made stays, since for databases of an earlier day it looks like what no photo
/// needs, and what was to follow them has nothing to follow. A restore that is cut off before the
/// exchange forgets no turn, and one that is cut off after it all of them. Where the mark cannot be
/// read, so that nobody knows which those are, none is told: then at most files stay that no photo
/// needs, and sidecars lag.
[[nodiscard]] QList<JournaledTurn> turns(const QString& package, const QString& stateFolder);
/// The catalogues follow what was put in place, or cannot, and the journal tells of no turn before
/// it any more: nothing isInPlace() from now on, and the note goes unless something is to be swept.
/// Where the mark cannot be removed all stays as it is, they follow once more at the next run, and
/// a sentence that says so is returned, else nothing.
[[nodiscard]] QStringList followed(const QString& package, const QString& stateFolder);

/// Where a kill between two renames left a library without its databases, the second is made good.
/// For every opening, also one that only reads: like SQLite's own undoing of what a crash cut off.
/// No lock is needed: the folder has its name or it has not.
void resume(const QString& package);

} // namespace LibraryRestore
