#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the desktop program was started with. Any thread.
struct DesktopArguments {
    QString library;  ///< path; empty: none was named
    QString defaults; ///< settings file in place of the user's own; empty: the user's own
    /// What is to be printed in place of showing windows (help, version, what is wrong), and the
    /// exit status that goes with it.
    std::optional<QString> answer;
    int status{0};

    /// `arguments`: without the program's name.
    [[nodiscard]] static DesktopArguments parse(const QStringList& arguments);
};
