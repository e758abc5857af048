// SPDX-License-Identifier: MIT
#include "panel/session/session.h"

#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/cycle/exchange_record.h"

#include <QElapsedTimer>

#include <chrono>
#include <thread>

namespace plc
{

namespace
{

const int settleMs = 1000;

} // namespace

/// Counts the frames that go out, and passes everything on.
class Session::Counter : public LinkTap
{
public:
    explicit Counter(std::shared_ptr<LinkTap> next) : m_next(std::move(next)) {}

    long sent() const { return m_sent; }

    void opened(const LinkEnd& panel, const LinkEnd& controller) override
    {
        if (m_next)
            m_next->opened(panel, controller);
    }
    void closed(const QString& why) override
    {
        if (m_next)
            m_next->closed(why);
    }
    void sent(const QByteArray& frame) override
    {
        ++m_sent;
        if (m_next)
            m_next->sent(frame);
    }
    void notSent(const QByteArray& frame, const QString& why) override
    {
        if (m_next)
            m_next->notSent(frame, why);
    }
    void received(const QByteArray& bytes) override
    {
        if (m_next)
            m_next->received(bytes);
    }
    void timedOut() override
    {
        if (m_next)
            m_next->timedOut();
    }

private:
    const std::shared_ptr<LinkTap> m_next;
    std::atomic<long> m_sent{0};
};

Session::Session(const Settings& settings, const Listeners& listeners)
    : m_counter(std::make_shared<Counter>(listeners.bytes)), m_runtime(settings)
{
    m_runtime.setTap(m_counter);
    m_runtime.setObserver([this, observer = listeners.exchanges](const ExchangeRecord& record) {
        if (observer)
            observer(record);
        ++m_observed;
    });
}

Session::~Session()
{
    m_runtime.stop(); // its thread uses the members that go before it
}

void Session::settle()
{
    const long exchanges = m_runtime.statistics().exchanges;
    QElapsedTimer clock;
    clock.start();
    while (m_observed < exchanges && clock.elapsed() < settleMs)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void Session::heedSignals()
{
    for (auto kind = WatchSignals::wait(0); kind != WatchSignals::None; kind = WatchSignals::wait(0)) {
        if (kind == WatchSignals::Suspended)
            WatchSignals::suspend();
        if (kind != WatchSignals::End)
            continue;
        m_ended = true;
        m_runtime.stop();
    }
}

long Session::framesSent() const
{
    return m_counter->sent();
}

bool Session::neverConnected() const
{
    return m_runtime.linkState().connects == 0;
}

void complainOfNoConnection(const Settings& settings)
{
    complain(QStringLiteral(
                 "%1:%2 cannot be reached; check that the controller is on, and that address and port "
                 "are right (--controller HOST:PORT; an address of IPv6 stands in brackets before a port, "
                 "as in [::1]:502)")
                 .arg(settings.host)
                 .arg(settings.port));
}

} // namespace plc
