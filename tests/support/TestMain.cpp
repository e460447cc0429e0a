#include "TestHome.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

/// Runs the tests under an application object, in a private home.
int main(int argc, char** argv)
{
    const TestHome home;
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return home.enter() ? RUN_ALL_TESTS() : 1;
}
