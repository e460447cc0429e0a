#include "PhotoCheck.h"

#include "CommandLineTexts.h"
#include "ImageSource.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cerrno>

namespace
{

/// Whether a folder above the file is closed to this user, so that it may well be there.
bool isOutOfSight(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) != 0 && errno == EACCES;
}

} // namespace

std::optional<PhotoCheck::Problem> PhotoCheck::problemOf(const QString& path, const QString& volume)
{
    using Kind = Problem::Kind;
    if (path.isEmpty()) {
        return Problem{Kind::Missing,
                       volume.isEmpty() ? CommandLineTexts::masterWithoutPath()
                                        : CommandLineTexts::volumeOffline(volume)};
    }
    const QFileInfo file(path);
    if (isOutOfSight(path) || (file.isFile() && !file.isReadable())) {
        return Problem{Kind::Missing, CommandLineTexts::fileUnreadable(path)};
    }
    if (!file.isFile()) {
        return Problem{Kind::Missing, CommandLineTexts::fileMissing(path)};
    }
    if (!ImageSource::readableExtensions().contains(file.suffix())) {
        return Problem{Kind::Unsupported, CommandLineTexts::typeNotReadable(file.suffix())};
    }
    if (const Result<void> decodes = ImageSource::check(path); !decodes.ok()) {
        return Problem{Kind::Damaged, decodes.error().message};
    }
    return std::nullopt;
}
