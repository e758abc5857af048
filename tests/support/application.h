// SPDX-License-Identifier: MIT
// The QCoreApplication that a program has and gtest's main() does not make.
#ifndef TESTS_PANEL_APPLICATION_H
#define TESTS_PANEL_APPLICATION_H

#include <QCoreApplication>

namespace test
{

/// Makes it when it is called first.
inline void needApplication()
{
    static int count = 1;
    static char name[] = "plcpanel";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication application(count, arguments);
}

} // namespace test

#endif
