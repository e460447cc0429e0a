#include "CareVerbs.h"

#include "BackupCommand.h"
#include "CommandLineTexts.h"
#include "VerifyCommand.h"

Verb CareVerbs::addVerify(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand(
        "verify", "Compare databases, sidecars, catalogues and files of a library");
    const auto given = std::make_shared<Given<VerifyCommand::Options>>();
    CommandLineOptions::addLibraryOptions(*app, given->library);
    app->add_flag("--json", given->options.json, "As a JSON document");
    CLI::Option* const repair =
        app->add_flag("--repair",
                      given->options.repair,
                      "Mend what can be mended without a choice, after a backup");
    CommandLineOptions::addAfterCrash(*app, given->library);
    app->get_option("--after-crash")->needs(repair);
    app->footer("Without --repair nothing is changed. With it sidecars, catalogues, indexes, id\n"
                "counters, statistics and missing thumbnails are made right, and rows that lead\n"
                "to something that is gone are deleted. No file is ever removed.\n"
                "\n"
                "Examples:\n"
                "  corvane-cli verify Pictures.photolibrary\n"
                "  corvane-cli verify Pictures.photolibrary --repair\n"
                "\n"
                "Exit status 1 says that something differs, or still differs.");
    return {app,
            [given] { return std::make_unique<VerifyCommand>(given->library, given->options); }};
}

Verb CareVerbs::addBackup(CLI::App& program)
{
    CLI::App* const app = program.add_subcommand(
        "backup", "Make, list or restore dated copies of databases and catalogues");
    const auto given = std::make_shared<Given<BackupCommand::Options>>();
    BackupCommand::Options& options = given->options;
    CommandLineOptions::addLibraryOptions(*app, given->library);
    app->add_flag("--json", options.json, "As a JSON document");
    CLI::Option* const list = app->add_flag_callback(
        "--list",
        [&options] { options.action = BackupCommand::Action::List; },
        "List the copies that there are");
    CLI::Option* const restore =
        app->add_option_function<std::string>(
               "--restore",
               [&options](const std::string& date) {
                   if (date.empty()) {
                       CommandLineOptions::refuse(CommandLineTexts::dateNotNamed());
                   }
                   options.action = BackupCommand::Action::Restore;
                   options.date = QString::fromStdString(date);
               },
               "Put the copy of this date in place, as --list names it or the begin of that")
            ->type_name("DATE");
    list->excludes(restore);
    CommandLineOptions::addAfterCrash(*app, given->library);
    app->get_option("--after-crash")->needs(restore);
    app->footer("Photos are not copied, and none is removed by a restore. What is there is copied\n"
                "before something is restored.\n"
                "\n"
                "Examples:\n"
                "  corvane-cli backup Pictures.photolibrary\n"
                "  corvane-cli backup Pictures.photolibrary --list\n"
                "  corvane-cli backup Pictures.photolibrary --restore 20261121-090501\n"
                "\n"
                "Exit status 1 says that a restore left something undone.");
    return {app,
            [given] { return std::make_unique<BackupCommand>(given->library, given->options); }};
}
