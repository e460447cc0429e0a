#pragma once

#include "LibraryCommand.h"

/// Lists photos, one line each or as a document.
class ListCommand final : public LibraryCommand
{
public:
    struct Options {
        SelectionOptions selection;
        bool json{false};
    };

    ListCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;

private:
    const Options m_options;
};
