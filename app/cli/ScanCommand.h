#pragma once

#include "LibraryCommand.h"
#include "LibraryFacts.h"
#include "ScanSettings.h"

#include <QList>

#include <optional>

class UserDefaults;
struct ScanReport;

/// Converts the selected photos, or says what would become of them.
class ScanCommand final : public LibraryCommand
{
public:
    struct Options {
        ScanSettings settings;
        SelectionOptions selection;
        bool dryRun{false};
        std::optional<QString> report; ///< path of the report, "-" for standard output
    };

    ScanCommand(LibraryOptions libraryOptions, Options options);

protected:
    [[nodiscard]] Access access() const override;
    [[nodiscard]] std::optional<int> prepare(const CommandServices& services) override;
    [[nodiscard]] int executeWithLibrary(PhotoLibrary& library,
                                         const CommandServices& services) override;
    [[nodiscard]] int interruptedEarly(const CommandServices& services) const override;

private:
    [[nodiscard]] int scan(PhotoLibrary& library,
                           const QList<PhotoFacts>& selection,
                           UserDefaults& defaults,
                           const CommandServices& services);
    [[nodiscard]] int dryRun(const QString& library,
                             const QList<PhotoFacts>& selection,
                             const UserDefaults& defaults,
                             const CommandServices& services);
    /// What the user may not expect of this selection and these settings.
    void sayHints(const QList<PhotoFacts>& selection,
                  const UserDefaults& defaults,
                  const CommandServices& services) const;
    /// Writes the report where one is wanted; the exit status is `status` unless that fails.
    [[nodiscard]] int
    finish(const ScanReport& report, int status, const CommandServices& services) const;
    [[nodiscard]] bool reportTakesOutput() const;

    const Options m_options;
};
