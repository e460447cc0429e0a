#include "FileSystemFlush.h"

#include "AtomicFile.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

using namespace Qt::StringLiterals;

FileSystemFlush::FileSystemFlush(const QString& folder)
    : m_path(folder)
    , m_folder(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    , m_error(m_folder.isOpen() ? 0 : errno)
{
}

Result<void> FileSystemFlush::flush() const
{
    if (!m_folder.isOpen() || ::syncfs(m_folder.number()) != 0) {
        return AtomicFile::errorFromErrno(m_folder.isOpen() ? errno : m_error, u"write"_s, m_path);
    }
    return {};
}
