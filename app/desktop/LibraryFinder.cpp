#include "LibraryFinder.h"

#include "OpeningChecks.h"
#include "PathText.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

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

bool LibraryFinder::looksLikeLibrary(const QString& path)
{
    if (!QFileInfo(path).isDir()) {
        return false;
    }
    const QString extension = PathText::extension(QDir::cleanPath(path)).toLower();
    return extension == "photolibrary"_L1 || extension == "aplibrary"_L1 ||
           QFileInfo(path + "/Database/apdb/Library.apdb"_L1).isFile();
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
