#include "FileSystemFlush.h"

#include "AtomicFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

using namespace Qt::StringLiterals;

namespace
{

/// File systems on disks of this computer of which syncfs(2) writes everything and empties the
/// disk's cache too, and the one in memory. Of a share, and of those of FUSE, it may reach neither
/// the server nor the disk below, as fsync(2) does; of some it leaves the disk's cache as it is.
/// From linux/magic.h and the sources of the file systems that it does not list.
constexpr std::array<quint32, 7> kFlushedInOneGo{
    0xEF53,     // ext2, ext3, ext4
    0x58465342, // XFS
    0x9123683E, // Btrfs
    0xF2F52010, // F2FS
    0xCA451A4E, // bcachefs
    0x2FC12FC1, // ZFS
    0x01021994, // tmpfs
};

bool isFlushedInOneGo(int folder)
{
    struct statfs fileSystem = {};
    return ::fstatfs(folder, &fileSystem) == 0 &&
           std::ranges::find(kFlushedInOneGo, static_cast<quint32>(fileSystem.f_type)) !=
               kFlushedInOneGo.end();
}

} // namespace

FileSystemFlush::FileSystemFlush(const QString& folder)
    : m_path(folder)
    , m_folder(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , m_error(m_folder.isOpen() ? 0 : errno)
{
}

Result<void> FileSystemFlush::flush() const
{
    if (m_folder.isOpen() && !isFlushedInOneGo(m_folder.number())) {
        return eachBelow(m_path);
    }
    if (!m_folder.isOpen() || ::syncfs(m_folder.number()) != 0) {
        return AtomicFile::errorFromErrno(m_folder.isOpen() ? errno : m_error, u"write"_s, m_path);
    }
    return {};
}

Result<void> FileSystemFlush::eachBelow(const QString& folder)
{
    if (!QFileInfo::exists(folder)) {
        return {};
    }
    Result<void> flushed = AtomicFile::flushFolder(folder);
    QDirIterator walk(folder,
                      QDir::Dirs | QDir::Files | QDir::Hidden | QDir::NoSymLinks |
                          QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (flushed.ok() && walk.hasNext()) {
        const QString path = walk.next();
        flushed =
            walk.fileInfo().isDir() ? AtomicFile::flushFolder(path) : AtomicFile::flushFile(path);
    }
    return flushed;
}
