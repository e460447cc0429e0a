#pragma once

#include "Command.h"
#include "CommandLineOptions.h"

/// Makes, lists and restores the dated copies of a library's databases and catalogues.
class BackupCommand final : public Command
{
public:
    enum class Action : quint8 { Make, List, Restore };

    struct Options {
        Action action{Action::Make};
        bool json{false};
        QString date; ///< of the copy to restore
    };

    BackupCommand(LibraryOptions libraryOptions, Options options);

    [[nodiscard]] int execute(const CommandServices& services) override;

private:
    [[nodiscard]] int make(const CommandServices& services) const;
    [[nodiscard]] int list(const CommandServices& services) const;
    [[nodiscard]] int restore(const CommandServices& services) const;

    const LibraryOptions m_libraryOptions;
    const Options m_options;
};
