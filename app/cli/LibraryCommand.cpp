#include "LibraryCommand.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "LibraryFailure.h"
#include "UserDefaults.h"
#include "VolumeSetting.h"

#include <utility>

LibraryCommand::LibraryCommand(LibraryOptions options)
    : m_libraryOptions(std::move(options))
{
}

int LibraryCommand::execute(const CommandServices& services)
{
    if (const std::optional<int> status = prepare(services)) {
        return *status;
    }
    OpenOptions options;
    options.access = access();
    options.afterCrash = m_libraryOptions.afterCrash;
    options.shouldStop = [&services] { return services.interruption.isRequested(); };
    options.volumeFolders = VolumeSetting::folders(
        UserDefaults(m_libraryOptions.defaultsFile.value_or(UserDefaults::standardFilePath())));
    options.volumeFolders.insert(m_libraryOptions.volumeFolders);
    options.forRepair = isForRepair();
    Result<std::unique_ptr<PhotoLibrary>> opened =
        PhotoLibrary::open(m_libraryOptions.library, options);
    if (services.interruption.isRequested()) {
        return interruptedEarly(services);
    }
    if (!opened.ok()) {
        return failed(opened.error(), services);
    }
    PhotoLibrary& library = *opened.value();
    for (const QString& warning : library.warnings()) {
        LibraryFailure::say(warning, m_libraryOptions.library, services);
    }
    const int status = executeWithLibrary(library, services);
    if (const Result<void> closed = library.close(); !closed.ok()) {
        return failed(closed.error(), services);
    }
    return status;
}

std::optional<int> LibraryCommand::prepare(const CommandServices& /*services*/)
{
    return std::nullopt;
}

int LibraryCommand::interruptedEarly(const CommandServices& services) const
{
    services.console.say(CommandLineTexts::interrupted());
    return ExitStatus::kInterrupted;
}

int LibraryCommand::failed(const Error& error, const CommandServices& services) const
{
    return LibraryFailure::tell(error, m_libraryOptions.library, services);
}
