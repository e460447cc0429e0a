#pragma once

#include "Command.h"

#include <QString>

#include <optional>

/// Writes a small library to try the program on.
class SampleCommand final : public Command
{
public:
    struct Options {
        QString directory;
        int photos{12};                      ///< RAW photos
        double megapixels{6.0};              ///< of each of them
        std::optional<QString> defaultsFile; ///< taken as every command does; nothing is read
        bool quiet{false};
    };

    explicit SampleCommand(Options options);

    [[nodiscard]] int execute(const CommandServices& services) override;

private:
    const Options m_options;
};
