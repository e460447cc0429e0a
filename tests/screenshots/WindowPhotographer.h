#pragma once

#include "DesktopProgram.h"

#include <QDialog>
#include <QString>

#include <functional>

/// Takes pictures of the program's windows over a library of which it may do what it likes. Main
/// thread.
class WindowPhotographer final
{
public:
    /// Pictures go into the folder; their names end with `suffix`.
    WindowPhotographer(DesktopProgram& program, QString library, QString folder, QString suffix);

    /// Of the windows that README and guide show. NO when one could not be taken.
    [[nodiscard]] bool takeMainWindows();
    /// Has a program that is made with this settings file afterwards offer a crash log: the
    /// program's state folder then holds one. NO when it could not be written.
    [[nodiscard]] static bool leaveCrashLog(const QString& settingsFile);
    /// Of every window, sheet and question, also that of a crash log that was left. NO when one
    /// could not be taken.
    [[nodiscard]] bool takeEverything();

private:
    [[nodiscard]] bool open();
    void takeCrashWindow();
    void takeWelcomePage();
    void takeReadOnlyLibrary();
    void takeLibraryWindow();
    void takeSmallLibraryWindow();
    void takeViewer();
    void takeInspector();
    void takeCorvaneWindow();
    void takeCorvaneWindowAtWork();
    void takeFixedSizeSheet();
    void takeDialogsOfTheLibraryWindow();
    void takeCare();
    void takeScan();
    void takeScanClosing();
    void take(QWidget& window, const QString& name);
    /// Of the dialog that `action` holds the program up with; it is closed then.
    void takeDialog(const QString& name, const std::function<void()>& action);

    DesktopProgram& m_program;
    QString m_library;
    QString m_folder;
    QString m_suffix;
    bool m_good{true};
};
