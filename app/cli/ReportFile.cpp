#include "ReportFile.h"

#include "AtomicFile.h"
#include "CommandLineTexts.h"
#include "Console.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace
{

bool isInside(const QString& folder, const QString& library)
{
    const QString root = QFileInfo(library).canonicalFilePath();
    return !root.isEmpty() && (folder == root || folder.startsWith(root + u'/'));
}

} // namespace

ReportFile::ReportFile(QString path)
    : m_path(std::move(path))
{
}

bool ReportFile::isStandardOutput() const
{
    return m_path == "-"_L1;
}

std::optional<QString> ReportFile::obstacle(const QString& library) const
{
    if (isStandardOutput()) {
        return std::nullopt;
    }
    const QFileInfo file(m_path);
    const QFileInfo folder(file.absolutePath());
    if (file.isDir()) {
        return CommandLineTexts::reportIsFolder(m_path);
    }
    if (!folder.isDir()) {
        return CommandLineTexts::reportFolderMissing(m_path);
    }
    const QString target = file.exists() ? QFileInfo(file.canonicalFilePath()).canonicalPath()
                                         : folder.canonicalFilePath();
    if (isInside(target, library)) {
        return CommandLineTexts::reportInLibrary(m_path);
    }
    if (file.exists() && !file.isFile()) {
        return CommandLineTexts::reportIsNoFile(m_path);
    }
    if ((file.exists() && !file.isWritable()) || !QFileInfo(target).isWritable()) {
        return CommandLineTexts::reportNotWritable(m_path);
    }
    return std::nullopt;
}

Result<void> ReportFile::write(const QByteArray& document, Console& console) const
{
    if (isStandardOutput()) {
        console.printDocument(document);
        return {};
    }
    return AtomicFile::write(QFileInfo(m_path).absoluteFilePath(), document);
}
