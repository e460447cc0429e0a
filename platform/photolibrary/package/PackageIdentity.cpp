#include "PackageIdentity.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

PackageIdentity::PackageIdentity(const QString& package)
    : m_package(package)
    , m_folder(::open(QFile::encodeName(package).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
}

Result<void> PackageIdentity::check() const
{
    struct stat opened = {};
    struct stat now = {};
    if (m_folder.isOpen() && ::fstat(m_folder.number(), &opened) == 0 &&
        ::stat(QFile::encodeName(m_package).constData(), &now) == 0 &&
        opened.st_dev == now.st_dev && opened.st_ino == now.st_ino) {
        return {};
    }
    return Error{ErrorCode::NotFound,
                 u"The library \"%1\" was moved, renamed or replaced while it was open: open it "
                 "again where it is now."_s.arg(m_package)};
}
