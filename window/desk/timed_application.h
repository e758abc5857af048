// SPDX-License-Identifier: MIT
/// \file
/// \brief An application that knows how long its longest event took.
#ifndef WINDOW_DESK_TIMED_APPLICATION_H
#define WINDOW_DESK_TIMED_APPLICATION_H

#include <QApplication>

namespace plc
{

/// What an event waits for counts, what other programs take of the processor meanwhile does not (where the
/// system tells it). An event that lets a dialog run its course is not counted.
class TimedApplication : public QApplication
{
    Q_OBJECT

public:
    TimedApplication(int& argc, char** argv);
    ~TimedApplication() override;

    bool notify(QObject* receiver, QEvent* event) override;

    /// \return milliseconds, since the start or the last forget()
    double longestEventMs() const { return m_longestMs; }
    QString longestEvent() const { return m_longest; } ///< whose and which, for whoever mends it
    long events() const { return m_events; }
    void forget();

private:
    double queuedMs() const;

    const int m_schedule; // file descriptor; -1: the system does not tell
    int m_level = 0;      // of event loops when the outermost event began; 0: none has
    bool m_ranDialog = false;
    double m_longestMs = 0;
    QString m_longest;
    long m_events = 0;
};

} // namespace plc

#endif
