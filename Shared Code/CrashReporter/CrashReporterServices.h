#pragma once

#include "CrashReportWindow.h"

#include <QStringList>

#include <chrono>
#include <functional>

class AddressBook;
class Bundle;
class Clock;
class SystemControl;
class Trash;
class UserDefaults;
class ZTBCrashReporterWindowController;

/// What the crash reporter is given. Everything that is referred to outlives every window.
struct CrashReporterServices {
    UserDefaults& defaults;
    const Bundle& bundle;
    Clock& clock;
    const SystemControl& systemControl;
    const AddressBook& addressBook;
    Trash& trash;
    /// The Library folders, in the order they are searched for crash logs.
    QStringList libraries;
    /// Makes the window "ZTBCrashReporterWindow" of a controller, which outlives it or releases it.
    std::function<CrashReportWindowPtr(ZTBCrashReporterWindowController& owner)> loadWindow;
    /// How long a server that sends nothing is waited for.
    std::chrono::milliseconds patience{std::chrono::seconds(60)};
};
