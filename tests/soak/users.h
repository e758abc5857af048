// SPDX-License-Identifier: MIT
/// \file
/// \brief The threads that use a panel during a soak run: they write, read and look, and tell the referee.
#ifndef SOAK_USERS_H
#define SOAK_USERS_H

#include "soak/referee.h"
#include "soak/watchdog.h"

#include <atomic>
#include <random>
#include <vector>

namespace soak
{

/// What the threads share. Everything outlives them.
struct Rig {
    Rig(plc::Runtime& aRuntime, simulator::SimulatedController& aController, Referee& aReferee,
        const std::vector<SoakVariable>& someVariables, const std::vector<int>& someCyclic)
        : runtime(aRuntime), controller(aController), referee(aReferee), variables(someVariables),
          cyclic(someCyclic)
    {
    }

    plc::Runtime& runtime;
    simulator::SimulatedController& controller;
    Referee& referee;
    const std::vector<SoakVariable>& variables;
    const std::vector<int>& cyclic; ///< index of each variable for plc::Runtime::value()
    std::atomic<bool> over{false};  ///< the threads end
    std::atomic<long> writesConfirmed{0};
    std::atomic<long> writesFailed{0};
    std::atomic<long> readsDone{0};
    std::atomic<long> readsFailed{0};
    std::atomic<long> looks{0};
    std::atomic<long> freshLooks{0};
    std::atomic<long> switches{0};
};

/// \return what the controller's memory holds for a variable
std::vector<quint32> valuesInController(simulator::SimulatedController& controller,
                                        const plc::Variable& where);

/// Writes to variables that nobody else writes, a few at a time and some twice, waits for the end of every
/// write, and then compares with the controller's memory.
class Writer
{
public:
    Writer(Rig& rig, Watchdog::Watch& watch, const std::vector<std::size_t>& own, unsigned seed);

    void run();

    /// The controller makes no faults any more: writes to each variable until one is confirmed.
    /// \return true when that was so for each after a few tries
    bool confirmAll();

private:
    struct Sent {
        std::size_t index;
        quint32 serial;
        plc::Pending<plc::WriteOutcome> pending;
    };

    void writeSome();
    Sent write(std::size_t index);
    plc::WriteOutcome finish(const Sent& sent);
    void compare(std::size_t index);
    bool confirm(std::size_t index);
    std::size_t below(std::size_t limit) { return m_random() % limit; }

    Rig& m_rig;
    Watchdog::Watch& m_watch;
    const std::vector<std::size_t> m_own;
    std::mt19937 m_random;
};

/// Makes one-shot reads, one after the other.
void readUntilOver(Rig& rig, Watchdog::Watch& watch, unsigned seed);

/// Looks at what is shown of every cyclic variable, again and again.
void lookUntilOver(Rig& rig, Watchdog::Watch& watch);

/// Switches one station after the other off and soon on again. At the end all are on.
void switchUntilOver(Rig& rig, Watchdog::Watch& watch, const std::vector<int>& stations, unsigned seed);

} // namespace soak

#endif
