#pragma once

#include "Command.h"

#include <QString>
#include <QStringList>

#include <memory>

/// What a command line asks for: a command, or a text to show instead of one.
struct ParsedCommandLine {
    std::unique_ptr<Command> command; ///< null where there is nothing to do
    QString output;                   ///< help or version, for standard output
    QString error;                    ///< what is wrong and how to see help, for standard error
};

/// Understands the arguments of the program.
namespace CommandLine
{

/// `arguments`: without the program's name. Thread: any.
[[nodiscard]] ParsedCommandLine parse(const QStringList& arguments, const QString& version);

} // namespace CommandLine
