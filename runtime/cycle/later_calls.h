// SPDX-License-Identifier: MIT
/// \file
/// \brief Calls to the runtime's users, collected under its lock and made when it is released.
#ifndef RUNTIME_CYCLE_LATER_CALLS_H
#define RUNTIME_CYCLE_LATER_CALLS_H

#include <functional>
#include <utility>
#include <vector>

namespace plc
{

/// Expects the lock that keeps all calls to the driver apart (see Runtime), but for make().
class LaterCalls
{
public:
    using Calls = std::vector<std::function<void()>>;

    void add(std::function<void()> call) { m_calls.push_back(std::move(call)); }

    bool areThere() const { return !m_calls.empty(); }

    Calls take() { return std::exchange(m_calls, Calls()); }

    /// With no lock held.
    static void make(const Calls& calls)
    {
        for (const auto& call : calls)
            call();
    }

private:
    Calls m_calls;
};

} // namespace plc

#endif
