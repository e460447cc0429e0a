#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Signs that another program than this one uses a library. None of them is certain, so that they
/// are told and stop nothing. iPhoto has no lock to be asked for: its "iPhotoLock.data" lies in the
/// package also while it does not run. Any thread.
namespace ForeignUse
{

/// The databases of a package as they lie on the disk.
struct Traces {
    QByteArray print;     ///< the same as long as nobody changes one of them
    qint64 lastChange{0}; ///< of any of them, nanoseconds since 1970; 0 without any
    qint64 lookedAt{0};   ///< when this was, nanoseconds since 1970
};

/// Opening the databases undoes what a crash left half-done, which is a change too.
[[nodiscard]] Traces tracesOf(const QString& package);

/// Notes in `stateFolder` the print of the databases as this program leaves them, so that the next
/// run tells its own changes from those of others. Where that fails the next run warns without
/// need.
void leave(const QString& stateFolder, const QByteArray& print);
/// Takes that note back: somebody else has changed the databases meanwhile.
void forget(const QString& stateFolder);

/// Whether the databases are found as this program left them.
[[nodiscard]] bool areAsLeft(const QString& stateFolder, const Traces& found);

/// What a person should know before the first write.
struct Warnings {
    QString passing; ///< a sentence or two that hold for `milliseconds` from now; null for none
    qint64 milliseconds{0};
    QStringList lasting; ///< one sentence or two each
};

/// That somebody else changed a database within the minute before `found`, which says less with
/// each moment, and that the package lies where other computers cannot be seen.
[[nodiscard]] Warnings
warnings(const QString& package, const QString& stateFolder, const Traces& found);

/// Whether a file system of that type (f_type of statfs) may be in use by other computers too.
[[nodiscard]] bool isShared(qint64 fileSystemType);
/// The same of file systems of FUSE, which share one such type. `mountInfo`: what
/// /proc/self/mountinfo tells (proc_pid_mountinfo(5)); `device`: numbers of the one that is asked
/// about, "major:minor".
[[nodiscard]] bool isSharedMount(const QByteArray& mountInfo, const QByteArray& device);

} // namespace ForeignUse
