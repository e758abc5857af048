// SPDX-License-Identifier: MIT
/// \file
/// \brief Waiting for what another thread or program does.
#ifndef TESTS_SUPPORT_WAITING_H
#define TESTS_SUPPORT_WAITING_H

#include <chrono>
#include <functional>
#include <thread>

namespace test
{

/// Long enough for a busy machine; a test that has to wait so long has failed.
constexpr int patienceMs = 20000;

/// Waits until \a condition holds. \return false when it never does
inline bool eventually(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patienceMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace test

#endif
