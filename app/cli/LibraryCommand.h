#pragma once

#include "Command.h"
#include "CommandLineOptions.h"
#include "PhotoLibrary.h"

#include <optional>

struct Error;

/// What all commands over a library share: opens it, reports what is wrong or in doubt with
/// it, closes it.
class LibraryCommand : public Command
{
public:
    [[nodiscard]] int execute(const CommandServices& services) final;

protected:
    explicit LibraryCommand(LibraryOptions options);

    /// What is asked of the library.
    [[nodiscard]] virtual Access access() const { return Access::Read; }

    /// Whether it mends a library, which may then be one that is not sound.
    [[nodiscard]] virtual bool isForRepair() const { return false; }

    /// Looks at the options before the library is opened; an exit status ends the command there.
    [[nodiscard]] virtual std::optional<int> prepare(const CommandServices& services);
    /// The command's work on the open library; answers the exit status.
    [[nodiscard]] virtual int executeWithLibrary(PhotoLibrary& library,
                                                 const CommandServices& services) = 0;
    /// The user asked to stop before the work began; answers the exit status.
    [[nodiscard]] virtual int interruptedEarly(const CommandServices& services) const;

    /// Says what is wrong with the library and answers the exit status.
    [[nodiscard]] int failed(const Error& error, const CommandServices& services) const;

    [[nodiscard]] const LibraryOptions& libraryOptions() const { return m_libraryOptions; }

private:
    const LibraryOptions m_libraryOptions;
};
