#pragma once

#include "LibraryCommand.h"

/// Says what is in a library and whether it is sound.
class InfoCommand final : public LibraryCommand
{
public:
    struct Options {
        bool json{false};
    };

    InfoCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;

private:
    const Options m_options;
};
