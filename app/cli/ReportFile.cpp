#include "ReportFile.h"

#include "AtomicFile.h"
#include "CommandLineTexts.h"
#include "Console.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <filesystem>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace
{

bool isInside(const QString& folder, const QString& library)
{
    const QString root = QFileInfo(library).canonicalFilePath();
    return !root.isEmpty() && (folder == root || folder.startsWith(root + u'/'));
}

/// As many links as the kernel follows in one path.
constexpr int kMostLinks = 40;

/// The file that a chain of links leads to, its folder free of links; it need not exist. Still a
/// link where the chain does not end or leads to what another descriptor has open. Nothing where
/// its folder does not exist.
std::optional<QFileInfo> targetOf(const QString& path)
{
    QString current = QFileInfo(path).absoluteFilePath();
    for (int followed = 0; followed < kMostLinks; ++followed) {
        const QFileInfo file(current);
        const QString folder = QFileInfo(file.path()).canonicalFilePath();
        if (folder.isEmpty()) {
            return std::nullopt;
        }
        const QString real = (folder == "/"_L1 ? QString() : folder) + u'/' + file.fileName();
        std::error_code error;
        const std::filesystem::path link =
            std::filesystem::read_symlink(QFile::encodeName(real).toStdString(), error);
        if (error || folder.startsWith("/proc/"_L1)) {
            return QFileInfo(real);
        }
        const QString content = QFile::decodeName(QByteArray::fromStdString(link.string()));
        current = content.startsWith(u'/') ? content : folder + u'/' + content;
    }
    return QFileInfo(current);
}

} // namespace

ReportFile::ReportFile(QString path)
    : m_path(std::move(path))
{
}

bool ReportFile::isStandardOutput() const
{
    static const QStringList kNames{u"-"_s, u"/dev/stdout"_s, u"/dev/fd/1"_s, u"/proc/self/fd/1"_s};
    return kNames.contains(m_path);
}

std::optional<QString> ReportFile::obstacle(const QString& library) const
{
    if (isStandardOutput()) {
        return std::nullopt;
    }
    if (QFileInfo(m_path).isDir()) {
        return CommandLineTexts::reportIsFolder(m_path);
    }
    const std::optional<QFileInfo> target = targetOf(m_path);
    const QFileInfo folder(target ? target->path() : QString());
    if (!target || !folder.isDir()) {
        return CommandLineTexts::reportFolderMissing(m_path);
    }
    if (isInside(folder.filePath(), library)) {
        return CommandLineTexts::reportInLibrary(m_path);
    }
    if (target->isSymLink() || (target->exists() && !target->isFile())) {
        return CommandLineTexts::reportIsNoFile(m_path);
    }
    if ((target->exists() && !target->isWritable()) || !folder.isWritable()) {
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
