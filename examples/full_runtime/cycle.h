// SPDX-License-Identifier: MIT
// The communication thread: asks the driver for frames, sends them, and leaves stations alone that do not answer.
#ifndef CYCLE_H
#define CYCLE_H

#include "account.h"
#include "link.h"

#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <thread>

class Cycle
{
public:
    // Wires the driver; \a settings outlive this. Until run() nothing is sent.
    Cycle(COMINFO& settings, Account& account, QList<HOST_VAR> variables, std::string host, std::string port);
    ~Cycle() { stop(); }

    void run();

    // Any thread. A station that is off is neither read nor written; what waits for it ends unsent.
    void switchStation(int station, bool on);

    // Ends the thread; what waits ends unsent, what was in flight as failed. Nothing is left in the driver but values.
    void stop();

private:
    struct Pause {
        Clock::time_point until;
        std::chrono::milliseconds length{0};
    };

    void loop();
    bool turn();
    void ended(const RW_VAR& request, int result, bool silent);
    void obey();
    void switchOff(int station);
    void emptyQueues();
    void refresh(QList<HOST_VAR> variables);
    void leaveNothing();

    COMINFO& m_settings;
    Account& m_account;
    const QList<HOST_VAR> m_variables;
    Link m_link;
    std::atomic<bool> m_stopping{false};
    std::mutex m_lock;            // of the wishes; never together with another
    std::map<int, bool> m_wishes; // stations to be switched
    // The communication thread's own.
    std::set<int> m_offByUser;
    std::set<int> m_silent; // stations that did not answer and are to be left alone
    std::map<int, Pause> m_pauses;
    std::thread m_thread;
};

#endif
