#pragma once

#include "LibraryCommand.h"

/// Compares databases, sidecars, catalogues and files, and mends what can be mended.
class VerifyCommand final : public LibraryCommand
{
public:
    struct Options {
        bool json{false};
        bool repair{false};
    };

    VerifyCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] Access access() const override;

    [[nodiscard]] bool isForRepair() const override { return m_options.repair; }

    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;

private:
    [[nodiscard]] int verify(PhotoLibrary& library, const CommandServices& services) const;
    [[nodiscard]] int repair(PhotoLibrary& library, const CommandServices& services) const;

    const Options m_options;
};
