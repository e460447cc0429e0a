#include "SampleCommand.h"

#include "CommandLineTexts.h"
#include "Console.h"
#include "ExitStatus.h"
#include "Interruption.h"
#include "ProgressLine.h"
#include "SampleLibrary.h"
#include "TextLayout.h"

#include <utility>

namespace
{

int statusOf(ErrorCode code)
{
    switch (code) {
    case ErrorCode::NotFound:
    case ErrorCode::NotWritable:
    case ErrorCode::Unsupported:
        return ExitStatus::kUsage;
    default:
        return ExitStatus::kLibrary;
    }
}

int failed(const Error& error, Console& console)
{
    if (error.code == ErrorCode::Interrupted) {
        console.say(CommandLineTexts::interrupted());
        return ExitStatus::kInterrupted;
    }
    console.say(TextLayout::escaped(error.message));
    const int status = statusOf(error.code);
    if (status == ExitStatus::kUsage) {
        console.say(CommandLineTexts::howToSeeHelp(QStringLiteral("sample")));
    }
    return status;
}

} // namespace

SampleCommand::SampleCommand(Options options)
    : m_options(std::move(options))
{
}

int SampleCommand::execute(const CommandServices& services)
{
    Console& console = services.console;
    const auto showProgress = [this, &console](int done, int total) {
        const QString name = CommandLineTexts::samplePhoto(done, total);
        if (m_options.quiet || !console.isTerminal()) {
            return;
        }
        if (!console.canRedraw()) {
            console.say(name);
            return;
        }
        console.showStatus(ProgressLine::render({.activity = CommandLineTexts::writing(),
                                                 .position = done,
                                                 .total = total,
                                                 .timeRemaining = {},
                                                 .name = {}},
                                                console.columns()));
    };
    const Result<QString> written =
        SampleLibrary::write(m_options.directory,
                             {.photos = m_options.photos, .megapixels = m_options.megapixels},
                             showProgress,
                             [&services] { return services.interruption.isRequested(); });
    console.clearStatus();
    if (!written.ok()) {
        return failed(written.error(), console);
    }
    console.print(CommandLineTexts::sampleWritten(written.value()));
    return ExitStatus::kDone;
}
