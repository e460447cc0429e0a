#include "helpers.h"

#include "CorvaneDelegate.h"
#include "MainThread.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace
{

/// The library package that holds the path, by its name; the path itself when none does.
QString libraryRoot(const QString& path)
{
    for (const auto suffix : {".aplibrary"_L1, ".photolibrary"_L1}) {
        if (const qsizetype start = path.indexOf(suffix); start >= 0) {
            return path.left(start + suffix.size());
        }
    }
    return path;
}

} // namespace

void helpers::deleteFile(const QString& path)
{
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::path(QFile::encodeName(path).toStdString()), ignored);
}

bool helpers::fileReadable(const QString& path)
{
    // Asked for the effective user, as open() will be.
    return ::faccessat(AT_FDCWD, QFile::encodeName(path).constData(), R_OK, AT_EACCESS) == 0;
}

bool helpers::fileExists(const QVariant& path, CorvaneDelegate& appDelegate)
{
    if (path.isNull()) {
        return false;
    }
    const QString file = path.toString();
    const bool exists = QFileInfo::exists(file);
    const bool readable = fileReadable(file);
    if (!exists) {
        return false;
    }
    if (readable) {
        return true;
    }
    callOnMainThread(
        [&appDelegate, root = libraryRoot(file)] { appDelegate.userSelectedFiles(root); });
    return fileReadable(file);
}
