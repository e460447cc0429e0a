#include "TestHome.h"

#include <QApplication>

#include <gtest/gtest.h>

/// Runs the tests of widgets under an application object, in a private home; without a display
/// unless QT_QPA_PLATFORM names one.
int main(int argc, char** argv)
{
    const TestHome home;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setQuitOnLastWindowClosed(false);
    return home.enter() ? RUN_ALL_TESTS() : 1;
}
