// SPDX-License-Identifier: MIT
// Tests of the window need an application with a display; offscreen unless the environment names another.
#include "window/desk/timed_application.h"

#include <QTemporaryDir>
#include <QtTest>

#include <gtest/gtest.h>

#include <memory>

// Of the address sanitizer, where there is one.
extern "C" void __lsan_disable() __attribute__((weak)); // NOLINT(readability-identifier-naming)
extern "C" void __lsan_enable() __attribute__((weak));  // NOLINT(readability-identifier-naming)

namespace
{

/// Qt's offscreen display keeps its screen to the end and beyond, which is no leak of ours.
std::unique_ptr<plc::TimedApplication> makeApplication(int& argc, char** argv)
{
    if (__lsan_disable)
        __lsan_disable();
    auto application = std::make_unique<plc::TimedApplication>(argc, argv);
    if (__lsan_enable)
        __lsan_enable();
    return application;
}

} // namespace

int main(int argc, char* argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir settings; // nothing of the user's is read or written, nor of another test's
    qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
    QCoreApplication::setOrganizationName(QStringLiteral("plcdriver-tests"));
    QCoreApplication::setApplicationName(QStringLiteral("window_test"));
    testing::InitGoogleTest(&argc, argv);
    const auto application = makeApplication(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion")); // looks and measures alike on every machine
    const int result = RUN_ALL_TESTS();
    // Qt fades the button of a line for 160 ms, and frees what it needs for that then, even when the line has gone.
    if (__lsan_disable)
        QTest::qWait(400);
    return result;
}
