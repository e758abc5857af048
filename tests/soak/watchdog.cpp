// SPDX-License-Identifier: MIT
#include "soak/watchdog.h"

#include <QThread>

#include <cstdio>
#include <unistd.h>

namespace soak
{

namespace
{
const int lookEveryMs = 100;
} // namespace

void Watchdog::Watch::begin(const QString& what)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_what = what;
    m_since.restart();
    m_looks = 0;
}

Watchdog::Watchdog(int limitMs, const std::function<QString()>& more)
    : m_limitMs(limitMs), m_more(more), m_thread([this] { run(); })
{
}

Watchdog::~Watchdog()
{
    m_over = true;
    m_thread.join();
}

Watchdog::Watch& Watchdog::add(const QString& name)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_watches.emplace_back(name);
}

void Watchdog::run()
{
    while (!m_over) {
        QThread::msleep(lookEveryMs);
        if (!somethingHangs())
            continue;
        report();
        _exit(exitStatus);
    }
}

bool Watchdog::somethingHangs()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Watch& watch : m_watches) {
        const std::lock_guard<std::mutex> watchLock(watch.m_mutex);
        if (++watch.m_looks > m_limitMs / lookEveryMs)
            return true;
    }
    return false;
}

void Watchdog::report() const
{
    std::fprintf(stderr, "plcsoak: WRONG: it hangs\n");
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const Watch& watch : m_watches) {
            const std::lock_guard<std::mutex> watchLock(watch.m_mutex);
            std::fprintf(stderr, "  %s: %s, for %lld ms\n", qPrintable(watch.m_name),
                         qPrintable(watch.m_what), static_cast<long long>(watch.m_since.elapsed()));
        }
    }
    std::fflush(stderr);
    std::fprintf(stderr, "  %s\n", qPrintable(m_more()));
}

} // namespace soak
