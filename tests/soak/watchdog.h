// SPDX-License-Identifier: MIT
/// \file
/// \brief Ends a soak run that hangs, and says what waits for what.
#ifndef SOAK_WATCHDOG_H
#define SOAK_WATCHDOG_H

#include <QElapsedTimer>
#include <QString>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace soak
{

/// Every thread tells its watch what it is doing; what takes longer than the limit is a hang. Then the
/// watchdog prints what every thread does and ends the process with exitStatus. Time counts as far as the
/// watchdog itself gets to run, since on a machine that is too busy everything takes long.
class Watchdog
{
public:
    static constexpr int exitStatus = 3;

    /// What one thread is doing. Its thread may change it while the watchdog looks.
    class Watch
    {
    public:
        explicit Watch(const QString& name) : m_name(name) { m_since.start(); }
        void begin(const QString& what);
        void end() { begin(QStringLiteral("works")); }

    private:
        friend class Watchdog;
        const QString m_name;
        mutable std::mutex m_mutex;
        QString m_what = QStringLiteral("works");
        QElapsedTimer m_since;
        int m_looks = 0; // of the watchdog since
    };

    /// \param more is asked for further words when something hangs; it may hang itself
    Watchdog(int limitMs, const std::function<QString()>& more);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Before the thread starts. The watch lives as long as this.
    Watch& add(const QString& name);

private:
    void run();
    bool somethingHangs();
    void report() const;

    const int m_limitMs;
    const std::function<QString()> m_more;
    mutable std::mutex m_mutex; // of the list
    std::deque<Watch> m_watches;
    std::atomic<bool> m_over{false};
    std::thread m_thread;
};

} // namespace soak

#endif
