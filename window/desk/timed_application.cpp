// SPDX-License-Identifier: MIT
#include "window/desk/timed_application.h"

#include <QByteArray>
#include <QEvent>
#include <QThread>

#include <chrono>

#include <fcntl.h>
#include <unistd.h>

namespace plc
{

namespace
{

const double nsOfMs = 1e6;

double msBetween(std::chrono::steady_clock::time_point from, std::chrono::steady_clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace

TimedApplication::TimedApplication(int& argc, char** argv)
    : QApplication(argc, argv), m_schedule(open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC))
{
}

TimedApplication::~TimedApplication()
{
    if (m_schedule >= 0)
        close(m_schedule);
}

/// \return how long this thread was ready to run, and others ran
double TimedApplication::queuedMs() const
{
    char text[100] = {}; // "RAN QUEUED TURNS", the times in ns
    if (m_schedule < 0 || pread(m_schedule, text, sizeof text - 1, 0) <= 0)
        return 0;
    const QByteArray queued = QByteArray(text).split(' ').value(1); // 0 where there is none
    return static_cast<double>(queued.toULongLong()) / nsOfMs;
}

void TimedApplication::forget()
{
    m_longestMs = 0;
    m_longest.clear();
    m_events = 0;
}

bool TimedApplication::notify(QObject* receiver, QEvent* event)
{
    const int level = QThread::currentThread()->loopLevel();
    if (QThread::currentThread() != thread())
        return QApplication::notify(receiver, event);
    if (m_level != 0) {
        m_ranDialog = m_ranDialog || level >= m_level;
        return QApplication::notify(receiver, event);
    }
    const QString who = QString::fromLatin1(receiver->metaObject()->className());
    const int type = event->type();
    m_level = level + 1;
    m_ranDialog = false;
    const double queued = queuedMs();
    const auto begin = std::chrono::steady_clock::now();
    const bool result = QApplication::notify(receiver, event);
    const double took = msBetween(begin, std::chrono::steady_clock::now()) - (queuedMs() - queued);
    m_level = 0;
    ++m_events;
    if (!m_ranDialog && took > m_longestMs) {
        m_longestMs = took;
        m_longest = QStringLiteral("%1, event %2").arg(who).arg(type);
    }
    return result;
}

} // namespace plc
