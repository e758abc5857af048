#include "panel/session/session.h"

#include "panel/terminal/output.h"
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

Session::Session(const Settings& settings, const Listeners& listeners) : m_runtime(settings)
{
    m_runtime.setTap(listeners.bytes);
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
