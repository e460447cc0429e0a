#include "CommandLineOptions.h"

#include "CommandLineTexts.h"
#include "ScanSettings.h"

#include <QFileInfo>

#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

using namespace Qt::StringLiterals;

using CommandLineOptions::refuse;

namespace
{

constexpr auto kSettingsGroup = "Settings of this run (else the stored ones, else the fallbacks)";
/// Beyond any picture: a side that is longer than the photo's leaves the photo as large as it is.
constexpr qint64 kLongestSide = 1'000'000;
/// The factors of the output-size cells 0 to 3.
constexpr std::array kScales{1.0, 0.75, 0.5, 0.25};

[[noreturn]] void refuseNumber(const std::string& option, const std::string& text)
{
    refuse(u"The value of %1 is not a number that fits: %2"_s.arg(QString::fromStdString(option),
                                                                  QString::fromStdString(text)));
}

[[noreturn]] void refuseRange(const std::string& option,
                              const QString& lowest,
                              const QString& highest,
                              const std::string& text)
{
    refuse(u"The value of %1 must lie between %2 and %3, but is %4"_s.arg(
        QString::fromStdString(option), lowest, highest, QString::fromStdString(text)));
}

double number(const std::string& option, const std::string& text)
{
    bool ok = false;
    const double value = QString::fromStdString(text).toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        refuseNumber(option, text);
    }
    return value;
}

void addNames(CLI::App& command,
              const std::string& option,
              QStringList& names,
              const std::string& description)
{
    command
        .add_option_function<std::vector<std::string>>(
            option,
            [&names](const std::vector<std::string>& values) {
                for (const std::string& value : values) {
                    names += QString::fromStdString(value);
                }
            },
            description)
        ->type_name("NAME")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

void addVolumes(CLI::App& command, QMap<QString, QString>& folders)
{
    command
        .add_option_function<std::vector<std::string>>(
            "--volume",
            [&folders](const std::vector<std::string>& values) {
                for (const std::string& value : values) {
                    const QString text = QString::fromStdString(value);
                    const QString name = text.section(u'=', 0, 0);
                    const QFileInfo folder(text.section(u'=', 1));
                    if (name.isEmpty() || !text.contains(u'=') || !folder.isDir()) {
                        refuse(CommandLineTexts::noVolume(text));
                    }
                    folders.insert(name, folder.absoluteFilePath());
                }
            },
            "Where the disk NAME of referenced masters is here (\"/\": the Mac's own disk); may be "
            "given more than once")
        ->type_name("NAME=FOLDER")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

CLI::Option* addSwitch(CLI::App& command,
                       const std::string& option,
                       std::optional<bool>& setting,
                       bool value,
                       const std::string& description)
{
    return command
        .add_flag_callback(
            option, [&setting, value] { setting = value; }, description)
        ->group(kSettingsGroup);
}

CLI::Option* addSide(CLI::App& command,
                     const std::string& option,
                     std::optional<int>& side,
                     const std::string& description)
{
    return command
        .add_option_function<std::string>(
            option,
            [&side, option](const std::string& text) {
                side = static_cast<int>(CommandLineOptions::whole(option, text, kLongestSide));
            },
            description)
        ->type_name("N")
        ->group(kSettingsGroup);
}

CLI::Option* addScale(CLI::App& command, std::optional<int>& index)
{
    return command
        .add_option_function<std::string>(
            "--scale",
            [&index](const std::string& text) {
                const double value = number("--scale", text);
                const auto* const found = std::find(kScales.begin(), kScales.end(), value);
                if (found == kScales.end()) {
                    refuse(u"The value of --scale must be 1, 0.75, 0.5 or 0.25, but is "_s +
                           QString::fromStdString(text));
                }
                index = static_cast<int>(found - kScales.begin());
            },
            "Size of the copies: 1, 0.75, 0.5 or 0.25 of the original's (fallback: 1)")
        ->type_name("F")
        ->group(kSettingsGroup);
}

void addOutputSettings(CLI::App& command, ScanSettings& settings)
{
    command
        .add_option_function<std::string>(
            "--quality",
            [&settings](const std::string& text) {
                settings.quality = CommandLineOptions::real("--quality", text, 0, 1);
            },
            "JPEG quality, 0 to 1 (fallback: 0.8)")
        ->type_name("Q")
        ->group(kSettingsGroup);
    CLI::Option* const scale = addScale(command, settings.scaleIndex);
    scale->excludes(
        addSide(command, "--long", settings.longSide, "Pixels of the copies' long side"));
    scale->excludes(
        addSide(command, "--short", settings.shortSide, "Pixels of the copies' short side"));
}

void addSwitches(CLI::App& command, ScanSettings& settings)
{
    addSwitch(
        command, "--albums", settings.albums, true, "File the copies into one album per event")
        ->excludes(addSwitch(command,
                             "--no-albums",
                             settings.albums,
                             false,
                             "File all copies into the album \"Corvane For iPhoto\" (fallback)"));
    addSwitch(
        command, "--tag", settings.tag, true, "Tag originals and copies with keywords (fallback)")
        ->excludes(addSwitch(command, "--no-tag", settings.tag, false, "Tag nothing"));
    addSwitch(
        command, "--trash", settings.trash, true, "Move converted originals to the library's trash")
        ->excludes(addSwitch(command,
                             "--no-trash",
                             settings.trash,
                             false,
                             "Leave converted originals where they are (fallback)"));
    addSwitch(
        command, "--originals", settings.originals, true, "Convert the original files (fallback)")
        ->excludes(addSwitch(command,
                             "--displayed",
                             settings.originals,
                             false,
                             "Convert the images that iPhoto displays, edits included"));
}

} // namespace

void CommandLineOptions::refuse(const QString& sentence)
{
    throw CLI::ValidationError(sentence.toStdString());
}

void CommandLineOptions::addLibraryOptions(CLI::App& command, LibraryOptions& options)
{
    addPath(command, "LIBRARY", options.library, "The library package");
    addDefaults(command, options.defaultsFile);
    addVolumes(command, options.volumeFolders);
    command.add_flag("--quiet", options.quiet, "Show no progress");
}

void CommandLineOptions::addDefaults(CLI::App& command, std::optional<QString>& path)
{
    command
        .add_option_function<std::string>(
            "--defaults",
            [&path](const std::string& text) {
                path = QString::fromStdString(text);
                const QFileInfo file(*path);
                if (path->isEmpty()) {
                    refuse(CommandLineTexts::fileNotNamed(u"--defaults"_s));
                }
                if (file.isDir()) {
                    refuse(CommandLineTexts::defaultsIsFolder(*path));
                }
                if (file.exists() && !file.isFile()) {
                    refuse(CommandLineTexts::defaultsIsNoFile(*path));
                }
                if (file.exists() && !file.isReadable()) {
                    refuse(CommandLineTexts::defaultsNotReadable(*path));
                }
            },
            "Settings file in place of ~/.config/corvane/defaults.plist")
        ->type_name("FILE");
}

void CommandLineOptions::addAfterCrash(CLI::App& command, LibraryOptions& options)
{
    command.add_flag("--after-crash",
                     options.afterCrash,
                     "Write also to a library that iPhoto did not close properly, once it proves "
                     "sound");
}

void CommandLineOptions::addSelection(CLI::App& command,
                                      SelectionOptions& options,
                                      const std::string& fallback)
{
    const std::string group =
        "Selection (different kinds intersect, the same kind unites; without any: " + fallback +
        ")";
    CLI::Option_group* const selection = command.add_option_group(group);
    CLI::Option* const all = selection->add_flag("--all", options.all, "All photos");
    all->excludes(selection->add_flag(
        "--raw", options.raw, "Photos with a RAW master that are no converted original"));
    addIds(*selection, options.ids, "The photo of this id; may be given more than once");
    addNames(
        *selection, "--roll", options.rolls, "Photos of this event; may be given more than once");
    addNames(
        *selection, "--album", options.albums, "Photos of this album; may be given more than once");
    addNames(*selection,
             "--keyword",
             options.keywords,
             "Photos with this keyword; may be given more than once");
    selection->add_flag(
        "--present", options.present, "Leave out photos whose master is missing or unreadable");
}

void CommandLineOptions::addIds(CLI::App& command,
                                QList<qint64>& ids,
                                const std::string& description)
{
    command
        .add_option_function<std::vector<std::string>>(
            "--id",
            [&ids](const std::vector<std::string>& values) {
                for (const std::string& value : values) {
                    ids += whole("--id", value, std::numeric_limits<qint64>::max());
                }
            },
            description)
        ->type_name("N")
        ->expected(1)
        ->take_all()
        ->allow_extra_args(false);
}

void CommandLineOptions::addScanSettings(CLI::App& command, ScanSettings& settings)
{
    addOutputSettings(command, settings);
    addSwitches(command, settings);
}

void CommandLineOptions::addPath(CLI::App& command,
                                 const std::string& name,
                                 QString& path,
                                 const std::string& description)
{
    command
        .add_option_function<std::string>(
            name,
            [&path](const std::string& text) { path = QString::fromStdString(text); },
            description)
        ->type_name("")
        ->required();
}

qint64 CommandLineOptions::whole(const std::string& option, const std::string& text, qint64 highest)
{
    bool ok = false;
    const qint64 value = QString::fromStdString(text).toLongLong(&ok);
    if (!ok) {
        refuseNumber(option, text);
    }
    if (value < 1 || value > highest) {
        refuseRange(option, u"1"_s, QString::number(highest), text);
    }
    return value;
}

double CommandLineOptions::real(const std::string& option,
                                const std::string& text,
                                double lowest,
                                double highest)
{
    const double value = number(option, text);
    if (value < lowest || value > highest) {
        refuseRange(option, QString::number(lowest), QString::number(highest), text);
    }
    return value;
}
