#include "LibraryFailure.h"

#include "Command.h"
#include "Console.h"
#include "ExitStatus.h"
#include "Result.h"
#include "TextLayout.h"

#include <QFileInfo>

void LibraryFailure::say(QString message, const QString& library, const CommandServices& services)
{
    const QFileInfo package(library);
    for (const QString& path :
         {package.filePath(), package.absoluteFilePath(), package.canonicalFilePath()}) {
        if (!path.isEmpty()) {
            message.replace(path, TextLayout::escaped(path));
        }
    }
    services.console.say(message);
}

int LibraryFailure::tell(const Error& error,
                         const QString& library,
                         const CommandServices& services)
{
    say(error.message, library, services);
    return ExitStatus::kLibrary;
}
