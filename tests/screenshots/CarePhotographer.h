#pragma once

#include "DesktopProgram.h"

#include <QString>

#include <functional>

/// Takes pictures of what the program says when a library is looked after; it damages the library
/// for that. Main thread.
class CarePhotographer final
{
public:
    /// How a picture is taken: of a window, and of the dialog that an action holds the program up
    /// with, which is closed then.
    struct Camera {
        std::function<void(QWidget&, const QString& name)> take;
        std::function<void(const QString& name, const std::function<void()>& action)> takeDialog;
    };

    CarePhotographer(DesktopProgram& program, QString library, Camera camera);

    /// NO when one could not be taken.
    [[nodiscard]] bool takeEverything();

private:
    void takeMenu();
    void takeVerification();
    void takeRepair();
    void takeBackups();
    [[nodiscard]] bool settle();
    void takeReport(const QString& name);
    template <typename Dialog>
    [[nodiscard]] Dialog* dialog();

    DesktopProgram& m_program;
    QString m_library;
    Camera m_camera;
    bool m_good{true};
};
