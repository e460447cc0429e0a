#include "CommandLine.h"

#include "CareVerbs.h"
#include "CheckCommand.h"
#include "CommandLineOptions.h"
#include "CommandLineTexts.h"
#include "InfoCommand.h"
#include "ListCommand.h"
#include "SampleCommand.h"
#include "ScanCommand.h"
#include "TextLayout.h"
#include "TrashCommand.h"
#include "Verb.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <vector>

using namespace Qt::StringLiterals;

namespace
{

constexpr int kMostSamplePhotos = 1000;
constexpr double kSmallestMegapixels = 0.05;
constexpr double kLargestMegapixels = 100.0;

Verb addScan(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand(
        "scan", "Replace RAW photos by JPEG copies: convert, import, file, tag");
    const auto given = std::make_shared<Given<ScanCommand::Options>>();
    CommandLineOptions::addLibraryOptions(*app, given->library);
    CommandLineOptions::addAfterCrash(*app, given->library);
    app->add_flag("--dry-run",
                  given->options.dryRun,
                  "Say what would become of each photo; write and store nothing");
    app->add_option_function<std::string>(
           "--report",
           [given = given.get()](const std::string& path) {
               if (path.empty()) {
                   CommandLineOptions::refuse(CommandLineTexts::fileNotNamed(u"--report"_s));
               }
               given->options.report = QString::fromStdString(path);
           },
           "Write a JSON document about each photo; - is standard output")
        ->type_name("FILE");
    CommandLineOptions::addScanSettings(*app, given->options.settings);
    CommandLineOptions::addSelection(*app, given->options.selection, "--raw");
    app->footer("Examples:\n"
                "  corvane-cli scan Pictures.photolibrary --dry-run\n"
                "  corvane-cli scan Pictures.photolibrary --roll \"Elder Park\" --albums\n"
                "  corvane-cli scan Pictures.photolibrary --raw --quality 0.7 --long 2048 --trash\n"
                "\n"
                "Originals are never deleted by a scan. With --trash they are moved to the\n"
                "library's trash; \"corvane-cli trash --empty\" gives their space back.\n"
                "\n"
                "Exit status: 0 all selected photos were converted; 1 an alert stopped the scan "
                "or\n"
                "some photos were not converted; 2 wrong usage; 3 the library cannot be used;\n"
                "130 interrupted.");
    return {app, [given] { return std::make_unique<ScanCommand>(given->library, given->options); }};
}

Verb addList(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand("list", "List photos, one line each");
    const auto given = std::make_shared<Given<ListCommand::Options>>();
    CommandLineOptions::addLibraryOptions(*app, given->library);
    app->add_flag("--json", given->options.json, "As a JSON document");
    CommandLineOptions::addSelection(*app, given->options.selection, "--all");
    app->footer("Columns: id, file name, event, pixels, megabytes, keywords.\n"
                "\n"
                "Examples:\n"
                "  corvane-cli list Pictures.photolibrary --raw\n"
                "  corvane-cli list Pictures.photolibrary --album Scotland --json");
    return {app, [given] { return std::make_unique<ListCommand>(given->library, given->options); }};
}

Verb addInfo(CLI::App& program)
{
    CLI::App* const app =
        program.add_subcommand("info", "Say what is in a library and whether it is sound");
    const auto given = std::make_shared<Given<InfoCommand::Options>>();
    CommandLineOptions::addLibraryOptions(*app, given->library);
    app->add_flag("--json", given->options.json, "As a JSON document");
    app->footer("Example:\n"
                "  corvane-cli info Pictures.photolibrary");
    return {app, [given] { return std::make_unique<InfoCommand>(given->library, given->options); }};
}

Verb addCheck(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand(
        "check", "Try every photo without writing: is its master there, does it decode to the end");
    const auto given = std::make_shared<Given<CheckCommand::Options>>();
    CommandLineOptions::addLibraryOptions(*app, given->library);
    app->add_flag("--json", given->options.json, "As a JSON document");
    CommandLineOptions::addSelection(*app, given->options.selection, "--all");
    app->footer("Exit status 1 says that something is wrong with a photo.\n"
                "\n"
                "Example:\n"
                "  corvane-cli check Pictures.photolibrary --raw");
    return {app,
            [given] { return std::make_unique<CheckCommand>(given->library, given->options); }};
}

Verb addTrash(CLI::App& program)
{
    CLI::App* const app =
        program.add_subcommand("trash", "List the library's trash, put photos back, or empty it");
    const auto given = std::make_shared<Given<TrashCommand::Options>>();
    TrashCommand::Options& options = given->options;
    CommandLineOptions::addLibraryOptions(*app, given->library);
    CommandLineOptions::addAfterCrash(*app, given->library);
    CLI::Option* const json = app->add_flag("--json", options.json, "List as a JSON document");
    CLI::Option* const restore = app->add_flag_callback(
        "--restore",
        [&options] { options.action = TrashCommand::Action::Restore; },
        "Put photos back");
    CLI::Option* const empty = app->add_flag_callback(
        "--empty",
        [&options] { options.action = TrashCommand::Action::Empty; },
        "Delete the photos for good");
    json->excludes(restore)->excludes(empty);
    restore->excludes(empty);
    app->add_flag("--yes", options.yes, "Do not ask before deleting; needed without a terminal")
        ->needs(empty);
    CommandLineOptions::addIds(
        *app, options.ids, "Put only the photo of this id back; may be given more than once");
    app->get_option("--id")->needs(restore);
    app->footer("Examples:\n"
                "  corvane-cli trash Pictures.photolibrary\n"
                "  corvane-cli trash Pictures.photolibrary --restore --id 7\n"
                "  corvane-cli trash Pictures.photolibrary --empty");
    return {app,
            [given] { return std::make_unique<TrashCommand>(given->library, given->options); }};
}

Verb addSample(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand(
        "sample", "Write DIRECTORY/Sample.photolibrary, a small library to try the program on");
    const auto options = std::make_shared<SampleCommand::Options>();
    CommandLineOptions::addPath(*app, "DIRECTORY", options->directory, "An existing folder");
    app->add_option_function<std::string>(
           "--photos",
           [options = options.get()](const std::string& text) {
               options->photos =
                   static_cast<int>(CommandLineOptions::whole("--photos", text, kMostSamplePhotos));
           },
           "Number of RAW photos (fallback: 12)")
        ->type_name("N");
    app->add_option_function<std::string>(
           "--megapixels",
           [options = options.get()](const std::string& text) {
               options->megapixels = CommandLineOptions::real(
                   "--megapixels", text, kSmallestMegapixels, kLargestMegapixels);
           },
           "Size of each RAW photo (fallback: 6)")
        ->type_name("M");
    CommandLineOptions::addDefaults(*app, options->defaultsFile);
    app->add_flag("--quiet", options->quiet, "Show no progress");
    app->footer("Nothing that exists is written over.\n"
                "\n"
                "Example:\n"
                "  corvane-cli sample /tmp && corvane-cli scan /tmp/Sample.photolibrary");
    return {app, [options] { return std::make_unique<SampleCommand>(*options); }};
}

/// CLI11 takes the arguments from the end of the list.
std::vector<std::string> reversed(const QStringList& arguments)
{
    std::vector<std::string> result;
    for (const QString& argument : arguments) {
        result.insert(result.begin(), argument.toStdString());
    }
    return result;
}

/// The command whose help there is to see; empty when the arguments name none.
QString commandOf(const CLI::App& program)
{
    const std::vector<CLI::App*> commands = program.get_subcommands();
    return commands.empty() ? QString() : QString::fromStdString(commands.front()->get_name());
}

ParsedCommandLine refused(const QString& sentence, const QString& command)
{
    ParsedCommandLine parsed;
    parsed.error = TextLayout::escaped(sentence) + u'\n' + CommandLineTexts::howToSeeHelp(command);
    return parsed;
}

/// Arguments that nothing takes, in their order.
QStringList unexpected(const std::vector<std::string>& remaining)
{
    QStringList arguments;
    for (const std::string& argument : remaining) {
        if (argument != "--") {
            arguments += QString::fromStdString(argument);
        }
    }
    return arguments;
}

/// What is wrong, in a sentence.
QString sentenceOf(const CLI::App& program, const CLI::ParseError& error)
{
    const std::vector<CLI::App*> commands = program.get_subcommands();
    const QStringList ofProgram = unexpected(program.remaining(false));
    if (!commands.empty() && !ofProgram.isEmpty()) {
        return CommandLineTexts::beforeCommand(ofProgram, commandOf(program));
    }
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        return CommandLineTexts::notExpected(
            commands.empty() ? ofProgram : unexpected(commands.front()->remaining(true)));
    }
    return QString::fromStdString(error.what());
}

/// The exceptions of a parse are help, the version, or what is wrong.
ParsedCommandLine ended(const CLI::App& program, const CLI::ParseError& error)
{
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
        return refused(sentenceOf(program, error), commandOf(program));
    }
    std::ostringstream output;
    std::ostringstream messages;
    program.exit(error, output, messages);
    ParsedCommandLine parsed;
    parsed.output = QString::fromStdString(output.str()).trimmed();
    return parsed;
}

} // namespace

ParsedCommandLine CommandLine::parse(const QStringList& arguments, const QString& version)
{
    CLI::App program("Corvane For iPhoto: replaces RAW photos of iPhoto libraries by JPEG copies.",
                     "corvane-cli");
    program.set_version_flag("--version", "corvane-cli " + version.toStdString());
    program.require_subcommand(0, 1);
    program.footer("Examples:\n"
                   "  corvane-cli sample /tmp\n"
                   "  corvane-cli list /tmp/Sample.photolibrary --raw\n"
                   "  corvane-cli scan /tmp/Sample.photolibrary --dry-run\n"
                   "  corvane-cli scan /tmp/Sample.photolibrary --raw --albums\n"
                   "\n"
                   "\"corvane-cli COMMAND --help\" explains a command and its options.");
    const std::vector<Verb> verbs{addScan(program),
                                  addList(program),
                                  addInfo(program),
                                  addCheck(program),
                                  addTrash(program),
                                  CareVerbs::addVerify(program),
                                  CareVerbs::addBackup(program),
                                  addSample(program)};
    try {
        std::vector<std::string> remaining = reversed(arguments);
        program.parse(remaining);
    } catch (const CLI::ParseError& error) {
        return ended(program, error);
    }
    for (const Verb& verb : verbs) {
        if (verb.app->parsed()) {
            ParsedCommandLine parsed;
            parsed.command = verb.make();
            return parsed;
        }
    }
    return refused(CommandLineTexts::noCommand(), QString());
}
