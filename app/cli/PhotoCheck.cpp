#include "PhotoCheck.h"

#include "CommandLineTexts.h"
#include "ImageSource.h"

#include <QFileInfo>

std::optional<PhotoCheck::Problem> PhotoCheck::problemOf(const QString& path)
{
    using Kind = Problem::Kind;
    if (path.isEmpty()) {
        return Problem{Kind::Missing, CommandLineTexts::masterWithoutPath()};
    }
    const QFileInfo file(path);
    if (!file.isFile()) {
        return Problem{Kind::Missing, CommandLineTexts::fileMissing(path)};
    }
    if (!file.isReadable()) {
        return Problem{Kind::Missing, CommandLineTexts::fileUnreadable(path)};
    }
    if (!ImageSource::readableExtensions().contains(file.suffix())) {
        return Problem{Kind::Unsupported, CommandLineTexts::typeNotReadable(file.suffix())};
    }
    if (const Result<void> decodes = ImageSource::check(path); !decodes.ok()) {
        return Problem{Kind::Damaged, decodes.error().message};
    }
    return std::nullopt;
}
