#include "ForeignUse.h"

#include "AtomicFile.h"
#include "SystemLog.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace
{

constexpr qint64 kNanoseconds = 1000000000;
constexpr qint64 kNanosecondsInMillisecond = 1000000;
/// iPhoto writes when something is changed in it, and so at least that often while it is in use.
constexpr qint64 kRecently = 60 * kNanoseconds;

/// From linux/magic.h and the sources of the file systems that it does not list.
constexpr std::array<qint64, 9> kSharedFileSystems{
    0x6969,     // NFS
    0x517B,     // SMB
    0xFF534D42, // CIFS
    0xFE534D42, // SMB 2 and later
    0x5346414F, // AFS
    0x6B414653, // AFS of the kernel
    0x73757245, // Coda
    0x01021997, // 9P
    0x00C36400, // Ceph
};

/// File systems of FUSE with a server, a service or another system behind them, by the types that
/// they bear in /proc/self/mountinfo. All of FUSE have one number for statfs, be it a share or a
/// disk of this computer ("fuseblk" of NTFS and exFAT, "fuse.gocryptfs").
constexpr std::array kSharedFuse{"fuse.sshfs",
                                 "fuse.rclone",
                                 "fuse.gvfsd-fuse",
                                 "fuse.kio-fuse",
                                 "fuse.davfs",
                                 "fuse.smbnetfs",
                                 "fuse.curlftpfs",
                                 "fuse.glusterfs",
                                 "fuse.ceph-fuse",
                                 "fuse.juicefs",
                                 "fuse.mfs",
                                 "fuse.s3fs",
                                 "fuse.goofys",
                                 "fuse.gcsfuse",
                                 "fuse.google-drive-ocamlfuse",
                                 "fuse.onedriver",
                                 "fuse.vmhgfs-fuse"};

/// As the kernel writes them: "0:52".
QByteArray numbersOf(dev_t device)
{
    return QByteArray::number(major(device)) + ':' + QByteArray::number(minor(device));
}

/// Whether a file or folder, or what a link at its path leads to, lies where other computers may
/// use it as well.
bool liesOnShare(const QString& file)
{
    const QByteArray path = QFile::encodeName(file);
    struct statfs fileSystem = {};
    if (::statfs(path.constData(), &fileSystem) == 0 &&
        ForeignUse::isShared(static_cast<qint64>(fileSystem.f_type))) {
        return true;
    }
    struct stat status = {};
    QFile mounts(u"/proc/self/mountinfo"_s);
    return ::stat(path.constData(), &status) == 0 && mounts.open(QIODevice::ReadOnly) &&
           ForeignUse::isSharedMount(mounts.readAll(), numbersOf(status.st_dev));
}

QString noteIn(const QString& stateFolder)
{
    return stateFolder + "/databases-as-left"_L1;
}

QByteArray noted(const QString& stateFolder)
{
    QFile file(noteIn(stateFolder));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

ForeignUse::Traces ForeignUse::tracesOf(const QString& package)
{
    Traces traces;
    traces.lookedAt = std::chrono::duration_cast<std::chrono::nanoseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
    const QString folder = package + "/Database/apdb"_L1;
    const QStringList names =
        QDir(folder).entryList({u"*.apdb"_s, u"*.db"_s}, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        struct stat status = {};
        if (::stat(QFile::encodeName(folder + u'/' + name).constData(), &status) != 0) {
            continue;
        }
        const qint64 change = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec;
        traces.lastChange = std::max(traces.lastChange, change);
        traces.print += u"%1 %2 %3\n"_s.arg(name).arg(change).arg(status.st_size).toUtf8();
    }
    return traces;
}

void ForeignUse::leave(const QString& stateFolder, const QByteArray& print)
{
    const Result<void> written =
        AtomicFile::write(noteIn(stateFolder), print, AtomicFile::Existing::Replace);
    if (!written.ok()) {
        systemLog(written.error().message);
    }
}

void ForeignUse::forget(const QString& stateFolder)
{
    QFile::remove(noteIn(stateFolder));
}

bool ForeignUse::areAsLeft(const QString& stateFolder, const Traces& found)
{
    return !found.print.isEmpty() && found.print == noted(stateFolder);
}

ForeignUse::Warnings
ForeignUse::warnings(const QString& package, const QString& stateFolder, const Traces& found)
{
    Warnings warnings;
    // The clock of a file server may be ahead of this one.
    const qint64 age = std::abs(found.lookedAt - found.lastChange);
    if (age < kRecently && !areAsLeft(stateFolder, found)) {
        warnings.milliseconds = (kRecently - age) / kNanosecondsInMillisecond;
        warnings.passing =
            u"The databases of the library \"%1\" were changed within the last minute, "
            "as it seems by another program. If iPhoto has the library open, quit it "
            "before anything is "
            "written: it would write over what changes meanwhile."_s.arg(package);
    }
    if (liesOnShare(package) || liesOnShare(package + "/Database/apdb"_L1)) {
        warnings.lasting
            << u"The library \"%1\" lies on a network file system, where it cannot be seen "
               "whether iPhoto on another computer has it open. Make sure that it is quit "
               "there."_s.arg(package);
    }
    return warnings;
}

bool ForeignUse::isShared(qint64 fileSystemType)
{
    constexpr qint64 kWord = 0xFFFFFFFF; // some systems tell it with a sign
    return std::ranges::find(kSharedFileSystems, fileSystemType & kWord) !=
           kSharedFileSystems.end();
}

bool ForeignUse::isSharedMount(const QByteArray& mountInfo, const QByteArray& device)
{
    constexpr qsizetype kDevice = 2;
    const QList<QByteArray> lines = mountInfo.split('\n');
    return std::ranges::any_of(lines, [&device](const QByteArray& line) {
        const QList<QByteArray> fields = line.split(' ');
        const QByteArray type = fields.value(fields.indexOf("-") + 1);
        return fields.value(kDevice) == device &&
               std::ranges::any_of(kSharedFuse, [&type](const char* name) { return type == name; });
    });
}
