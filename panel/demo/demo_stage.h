// SPDX-License-Identifier: MIT
/// \file
/// \brief What the demo's steps are made of: one thing done by the panel, compared with the controller.
#ifndef PANEL_DEMO_DEMO_STAGE_H
#define PANEL_DEMO_DEMO_STAGE_H

#include "panel/demo/demo_controller.h"
#include "panel/demo/demo_report.h"
#include "panel/session/session.h"

#include <functional>
#include <mutex>
#include <vector>

namespace plc
{

using Values = std::vector<quint32>;

/// A running panel and the controller that it talks to. Each function is one step of the table.
class DemoStage
{
public:
    /// \param cyclic variables that are refreshed, each with its station
    /// \param listeners are told as well
    DemoStage(const Settings& settings, const std::vector<Variable>& cyclic, const Listeners& listeners,
              DemoController* controller, DemoReport* report);

    /// Writes; the controller must have confirmed it, hold the values, and hold what it held elsewhere in the
    /// words that bits were written to.
    void write(const Variable& variable, const Values& values);

    /// Puts values into the controller and reads them; they must come back.
    void read(const Variable& variable, const Values& values);

    /// Writes; it must fail so, and the controller hold what it held.
    void writeFails(const Variable& variable, const Values& values, FailureKind kind);

    /// Reads; it must fail so.
    void readFails(const Variable& variable, FailureKind kind);

    /// Puts \a values into the controller; the cyclic variable \a index must show them as fresh soon.
    void shows(int index, const Values& values);

    /// The cyclic variable \a index must have this state soon.
    void looksOld(int index, ValueState state);

    /// Puts \a values of the cyclic variable \a index into the controller while its station is switched off:
    /// they must not be asked for while the cyclic variable \a other is refreshed three times.
    void isNotRead(int index, const Values& values, int other);

    /// While the cyclic variable \a other's station is silent, so that nothing else is sent, writes to
    /// \a variable and switches its station off: the write must be discarded.
    void writeIsDiscarded(const Variable& variable, const Values& values, const Variable& other,
                          const Values& otherValues);

    /// Switches a station off or on at the panel; the step compares nothing.
    void switchStation(int station, bool on);

    /// Makes a station silent or not; the step compares nothing.
    void setSilent(int station, bool silent);

private:
    Listeners withOwn(Listeners listeners);
    DemoStep begin(const QString& what);
    void finish(DemoStep* step);
    bool waitForRequests(int station, int number);
    void collect(const ExchangeRecord& record);
    QString nameOf(const Variable& variable) const;
    QString writeName(const Variable& variable, const Values& values) const;
    void compareMemory(const Variable& variable, const Values& expected, DemoStep* step);

    const bool m_multiStation;
    const std::vector<Variable> m_cyclic;
    DemoController* const m_controller;
    DemoReport* const m_report;
    std::mutex m_mutex;
    std::vector<ExchangeRecord> m_exchanges; // of writes and one-shot reads since the step began
    Session m_session;
};

} // namespace plc

#endif
