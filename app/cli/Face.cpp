#include "Face.h"

#include "Bundle.h"
#include "Command.h"
#include "CommandLine.h"
#include "CommandLineTexts.h"
#include "Console.h"
#include "ExitStatus.h"

int Face::run(const QStringList& arguments, const CommandServices& services)
{
    Console& console = services.console;
    const ParsedCommandLine parsed = CommandLine::parse(arguments, services.bundle.version());
    int status = ExitStatus::kDone;
    if (parsed.command) {
        status = parsed.command->execute(services);
    } else if (!parsed.error.isEmpty()) {
        console.say(parsed.error);
        status = ExitStatus::kUsage;
    } else {
        console.print(parsed.output);
    }
    if (console.hasFailed()) {
        console.say(CommandLineTexts::outputNotWritten());
        return status == ExitStatus::kDone ? ExitStatus::kNotAll : status;
    }
    return status;
}
