#pragma once

#include "LibraryCommand.h"

/// Tries every selected photo without writing.
class CheckCommand final : public LibraryCommand
{
public:
    struct Options {
        SelectionOptions selection;
        bool json{false};
    };

    CheckCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;

private:
    const Options m_options;
};
