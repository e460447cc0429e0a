#include "CrashReporting.h"

#include "Directories.h"
#include "ZTBCrashReporter.h"
#include "ZTBCrashReporterWindow.h"

CrashReporting::CrashReporting(UserDefaults& defaults, const Bundle& bundle, Clock& clock)
    : m_services{.defaults = defaults,
                 .bundle = bundle,
                 .clock = clock,
                 .systemControl = m_systemControl,
                 .addressBook = m_addressBook,
                 .trash = m_trash,
                 .libraries = Directories::libraries(),
                 .loadWindow = {}}
{
    m_services.loadWindow = [this](ZTBCrashReporterWindowController& owner) {
        m_window = new ZTBCrashReporterWindow(owner, m_services.defaults);
        return CrashReportWindowPtr(m_window.data());
    };
}

CrashReporting::~CrashReporting()
{
    if (m_window) {
        m_window->end();
    }
    // The event loop that would delete it may have ended.
    delete m_window.data();
}

void CrashReporting::checkForNewCrashes()
{
    ZTBCrashReporter::checkForNewCrashes(m_services);
}

ZTBCrashReporterWindow* CrashReporting::window() const
{
    return m_window.data();
}
