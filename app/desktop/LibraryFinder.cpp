#include "LibraryFinder.h"

#include "OpeningChecks.h"

#include <QDir>
#include <QFileInfo>

namespace
{

constexpr QDir::Filters kFolders = QDir::Dirs | QDir::NoDotAndDotDot;

QStringList foldersIn(const QString& folder)
{
    QStringList paths;
    const QFileInfoList entries = QDir(folder).entryInfoList(kFolders, QDir::Name);
    for (const QFileInfo& entry : entries) {
        paths.append(entry.absoluteFilePath());
    }
    return paths;
}

} // namespace

bool LibraryFinder::isLibrary(const QString& path)
{
    // Most folders are told apart by a name that they lack, without a file being read.
    return QFileInfo::exists(path + QStringLiteral("/Database")) &&
           OpeningChecks::recognise(path).ok();
}

QStringList LibraryFinder::librariesIn(const QString& folder)
{
    QStringList found;
    const QStringList below = foldersIn(folder);
    for (const QString& path : below) {
        if (isLibrary(path)) {
            found.append(path);
            continue;
        }
        const QStringList deeper = foldersIn(path);
        for (const QString& candidate : deeper) {
            if (isLibrary(candidate)) {
                found.append(candidate);
            }
        }
    }
    return found;
}
