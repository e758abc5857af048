// SPDX-License-Identifier: MIT
#include "cycle.h"

namespace
{

const int retries = 3;
const std::chrono::milliseconds shortestPause(1000), longestPause(30000);
const std::chrono::milliseconds idle(1);

} // namespace

Cycle::Cycle(COMINFO& settings, Account& account, QList<HOST_VAR> variables, std::string host,
             std::string port)
    : m_settings(settings), m_account(account), m_variables(std::move(variables)),
      m_link(std::move(host), std::move(port))
{
    m_settings = COMINFO();
    m_settings.maxBlockCount = 61;
    m_settings.multiStation = 1;
    m_settings.retryLimit = retries;
    m_settings.hostWriteMode = 2; // writes go to the controller
    SetComInfo(&m_settings);
    RegistCallBackFuncIntf(nullptr, nullptr); // the results say it all
    refresh(m_variables);
}

void Cycle::run()
{
    m_thread = std::thread([this] { loop(); });
}

void Cycle::stop()
{
    m_stopping = true;
    if (m_thread.joinable())
        m_thread.join();
    SetComInfo(nullptr);
}

void Cycle::switchStation(int station, bool on)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    m_wishes[station] = on;
}

void Cycle::loop()
{
    while (!m_stopping) {
        obey();
        if (!turn()) // null does not mean that nothing is queued: ask again soon
            std::this_thread::sleep_for(idle);
    }
    leaveNothing();
}

// \return false when there was nothing to send
bool Cycle::turn()
{
    const Protocol* const next = m_account.poll();
    if (next == nullptr)
        return false;
    const RW_VAR request = next->var; // a copy: finish() ends the record's life
    const bool replyExpected = next->replyLength != 0;
    Exchange exchange = m_link.exchange(next->frame, replyExpected);
    if (!replyExpected && !exchange.sent)
        exchange.reply = QByteArray(1, '\0'); // an empty one would say that the broadcast went out
    ended(request, m_account.finish(request, exchange.reply), exchange.silent);
    return true;
}

void Cycle::ended(const RW_VAR& request, int result, bool silent)
{
    if (result == PLC_RETRYING)
        return;
    m_settings.retryLimit = m_settings.failCount + retries; // each request has its own tries
    if (result == PLC_DONE) {
        m_pauses.erase(request.station);
    } else if (silent) { // the station's silence, not the connection's: each time it is left alone for longer
        Pause& pause = m_pauses[request.station];
        pause.length = std::min(std::max(2 * pause.length, shortestPause), longestPause);
        pause.until = Clock::now() + pause.length;
        m_silent.insert(request.station);
    }
}

// Between two turns: what the user wished, stations that were silent, and those whose pause is over.
void Cycle::obey()
{
    std::map<int, bool> wishes;
    {
        const std::lock_guard<std::mutex> lock(m_lock);
        wishes.swap(m_wishes);
    }
    for (const auto& [station, on] : wishes) {
        m_pauses.erase(station);
        m_silent.erase(station);
        m_offByUser.erase(station);
        if (!on)
            m_offByUser.insert(station);
        on ? m_account.accept(station) : switchOff(station);
    }
    while (!m_silent.empty())
        switchOff(*m_silent.begin());
    for (auto& [station, pause] : m_pauses) {
        if (Clock::now() < pause.until || m_offByUser.count(station) != 0)
            continue;
        m_account.accept(station);
        pause.until = Clock::time_point::max(); // until it answers, or is silent again
    }
}

// The driver discards a request only when its turn comes while its station is off: so that comes first.
void Cycle::switchOff(int station)
{
    m_account.refuse(station);
    emptyQueues();
    if (!m_stopping)
        m_account.discarded(station);
    m_silent.erase(station);
    refresh(m_variables);
}

void Cycle::emptyQueues()
{
    refresh(QList<HOST_VAR>()); // without cyclic reads no run of five writes holds the others back
    while (!m_stopping && AddListWriteVar(nullptr, 0) != 0)
        if (!turn())
            std::this_thread::sleep_for(idle);
}

void Cycle::refresh(QList<HOST_VAR> variables)
{
    ReCreatReadVarList(&variables);
}

// The library may be used by another project afterwards, so no request of this one may be left in it.
void Cycle::leaveNothing()
{
    refresh(QList<HOST_VAR>());
    m_settings.retryLimit = 0;
    for (int station = 0; station <= 255; ++station)
        m_account.refuse(station);
    do {
        while (const Protocol* const next = m_account.poll()) {
            const RW_VAR request = next->var;
            m_account.finish(request, QByteArray(1, '\0')); // what was in flight fails
        }
    } while (AddListWriteVar(nullptr, 0) != 0);
    for (int station = 0; station <= 255; ++station)
        m_account.discarded(station);
    EnCommStation(-1, 1);
}
