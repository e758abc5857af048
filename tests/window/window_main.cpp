// SPDX-License-Identifier: MIT
// Tests of the window need an application with a display; offscreen unless the environment names another.
#include "window/desk/timed_application.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir settings; // nothing of the user's is read or written, nor of another test's
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    QCoreApplication::setOrganizationName(QStringLiteral("plcdriver-tests"));
    QCoreApplication::setApplicationName(QStringLiteral("window_test"));
    testing::InitGoogleTest(&argc, argv);
    const plc::TimedApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion")); // looks and measures alike on every machine
    return RUN_ALL_TESTS();
}
