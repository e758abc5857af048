// SPDX-License-Identifier: MIT
/// \file
/// \brief A runtime behind the window: what may wait for it is done on a thread of its own.
#ifndef WINDOW_SESSION_LIVE_SESSION_H
#define WINDOW_SESSION_LIVE_SESSION_H

#include "window/session/source.h"

#include <QThread>

#include <atomic>
#include <memory>

namespace plc
{

class Mailbox;
class Runtime;

/// One at a time in a process, as there is one Runtime.
class LiveSession : public Source
{
    Q_OBJECT

public:
    explicit LiveSession(Watched watched);

    /// Ends the runtime, unless end() did, and waits for that: a moment, as it is told to stop.
    ~LiveSession() override;

    /// Ends the runtime and returns at once; ended() follows. Nothing may be asked of it any more.
    void end();

    /// Returns at once; failed() says why there will be nothing.
    void start();

    const Watched& watched() const override { return m_watched; }
    bool isLive() const override { return true; }
    qint64 nowMs() const override;
    Snapshot take() override;
    void look(const std::vector<int>& indexes) override;
    void setRecorded(int index, bool recorded) override;

    /// \return the number of the write, whose end a snapshot tells
    quint64 write(int index, const std::vector<quint32>& values);

    void setStation(int station, bool on);

Q_SIGNALS:
    void ended();

private:
    void startRuntime();
    void report(const std::vector<int>& indexes);
    template <class Work>
    void onThread(Work work);

    const Watched m_watched;
    const std::unique_ptr<Mailbox> m_mailbox;
    QThread m_thread;
    std::unique_ptr<QObject> m_worker;  // lives on it
    std::unique_ptr<Runtime> m_runtime; // used on it alone
    std::atomic<bool> m_isLooking{false};
    quint64 m_writes = 0;
};

} // namespace plc

#endif
