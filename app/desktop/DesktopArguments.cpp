#include "DesktopArguments.h"

#include <QCoreApplication>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

DesktopArguments DesktopArguments::parse(const QStringList& arguments)
{
    std::string library;
    std::string defaults;
    CLI::App parser("Replaces RAW photos of an iPhoto library by JPEG copies.", "corvane");
    parser.set_version_flag("--version",
                            "corvane " + QCoreApplication::applicationVersion().toStdString(),
                            "Show the version and exit");
    parser.add_option("LIBRARY", library, "The library package to open")->type_name("");
    parser.add_option("--defaults", defaults, "Use this settings file in place of your own")
        ->type_name("FILE");
    parser.footer("Without a library the program offers those in the Pictures folder.\n"
                  "See also: corvane-cli, the same without windows.");

    // CLI11 takes them from the back.
    std::vector<std::string> reversed;
    for (const QString& argument : arguments) {
        reversed.push_back(argument.toStdString());
    }
    std::ranges::reverse(reversed);
    DesktopArguments parsed;
    try {
        parser.parse(reversed);
        parsed.library = QString::fromStdString(library);
        parsed.defaults = QString::fromStdString(defaults);
    } catch (const CLI::ParseError& error) {
        std::ostringstream output;
        std::ostringstream errors;
        parsed.status = parser.exit(error, output, errors) == 0 ? 0 : 2;
        parsed.answer = QString::fromStdString(output.str() + errors.str());
    }
    return parsed;
}
