#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>
#include <string>

namespace CLI
{
class App;
}
struct ScanSettings;

/// What every command over a library is given.
struct LibraryOptions {
    QString library;                     ///< path of the package
    std::optional<QString> defaultsFile; ///< in place of the user's own settings
    bool quiet{false};
    QMap<QString, QString> volumeFolders; ///< in front of those of the settings
    bool afterCrash{false}; ///< write also to a library that iPhoto did not close properly
};

/// Which photos are meant. Different kinds intersect, the same kind unites.
struct SelectionOptions {
    bool all{false};
    bool raw{false};
    QList<qint64> ids;
    QStringList rolls;
    QStringList albums;
    QStringList keywords;
    bool present{false}; ///< leave out photos whose master is missing or unreadable
};

/// Options that several commands share. A value that does not fit throws CLI::ValidationError with
/// a sentence that says so.
namespace CommandLineOptions
{

/// Ends the parsing: throws CLI::ValidationError.
[[noreturn]] void refuse(const QString& sentence);
/// LIBRARY, --defaults, --volume and --quiet.
void addLibraryOptions(CLI::App& command, LibraryOptions& options);
/// A settings file that is there must be a file that can be read.
void addDefaults(CLI::App& command, std::optional<QString>& path);
void addAfterCrash(CLI::App& command, LibraryOptions& options);
/// `fallback`: the option that holds where none is given, for the help.
void addSelection(CLI::App& command, SelectionOptions& options, const std::string& fallback);
void addIds(CLI::App& command, QList<qint64>& ids, const std::string& description);
void addScanSettings(CLI::App& command, ScanSettings& settings);
/// A positional path that has to be given.
void addPath(CLI::App& command,
             const std::string& name,
             QString& path,
             const std::string& description);

/// The whole number in `text`, from 1 to `highest`.
[[nodiscard]] qint64 whole(const std::string& option, const std::string& text, qint64 highest);
/// The number in `text`, from `lowest` to `highest`.
[[nodiscard]] double
real(const std::string& option, const std::string& text, double lowest, double highest);

} // namespace CommandLineOptions
