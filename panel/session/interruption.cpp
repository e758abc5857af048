// SPDX-License-Identifier: MIT
#include "panel/session/interruption.h"

#include "panel/terminal/watch_signals.h"

namespace plc
{

Interruption::Interruption(std::function<void()> end) : m_thread([this, end = std::move(end)] { watch(end); })
{
}

Interruption::~Interruption()
{
    m_isOver = true;
    m_thread.join();
}

void Interruption::watch(const std::function<void()>& end)
{
    const int lookMs = 20;
    while (!m_isOver && !m_came) {
        const WatchSignals::Kind kind = WatchSignals::wait(lookMs);
        if (kind == WatchSignals::Suspended)
            WatchSignals::suspend();
        if (kind != WatchSignals::End)
            continue;
        m_came = true;
        end();
    }
}

} // namespace plc
