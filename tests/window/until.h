// SPDX-License-Identifier: MIT
/// \file
/// \brief Waiting for something while the window goes on.
#ifndef TESTS_WINDOW_UNTIL_H
#define TESTS_WINDOW_UNTIL_H

#include "support/waiting.h"

#include <QCoreApplication>

namespace test
{

/// \return false when \a condition never holds
inline bool until(const std::function<bool()>& condition)
{
    return eventually([&condition] {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return condition();
    });
}

} // namespace test

#endif
