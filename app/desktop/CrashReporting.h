#pragma once

#include "AddressBook.h"
#include "CrashReporterServices.h"
#include "DesktopTrash.h"
#include "LinuxSystemControl.h"

#include <QPointer>

class ZTBCrashReporterWindow;

/// The crash reporter as the desktop program has it, with a window that ends with the program.
/// Main thread.
class CrashReporting final
{
public:
    /// All outlive it.
    CrashReporting(UserDefaults& defaults, const Bundle& bundle, Clock& clock);
    ~CrashReporting();
    CrashReporting(const CrashReporting&) = delete;
    CrashReporting& operator=(const CrashReporting&) = delete;

    /// Raises what ZTBCrashReporter raises.
    void checkForNewCrashes();

    /// The window that was made last; null when there is none or it was closed.
    [[nodiscard]] ZTBCrashReporterWindow* window() const;

private:
    NoAddressBook m_addressBook;
    DesktopTrash m_trash;
    LinuxSystemControl m_systemControl;
    CrashReporterServices m_services;
    QPointer<ZTBCrashReporterWindow> m_window;
};
