// SPDX-License-Identifier: MIT
#include "soak/users.h"

#include "support/controller_values.h"

#include <QThread>

#include <algorithm>

namespace soak
{

namespace
{

const std::size_t mostAtOnce = 6;
const std::size_t longestPauseMs = 20; // between two turns of a writer: reads shall have their turn too
const unsigned long readPauseMs = 2;
const unsigned long lookPauseMs = 20;
const unsigned long longestOffMs = 40;
const unsigned long longestOnMs = 400; // so that the stations are on for most of the time
const int mostTurns = 5;               // a busy machine may miss a time-out of its own

std::vector<quint32> valuesOneByOne(simulator::SimulatedController& controller, const plc::Variable& where)
{
    std::vector<quint32> values;
    for (int index = 0; index < where.count; ++index)
        values.push_back(inController(controller, where.area, where.element + index, where.station));
    return values;
}

} // namespace

std::vector<quint32> valuesInController(simulator::SimulatedController& controller,
                                        const plc::Variable& where)
{
    // Element by element, and what the panel has given up may still be carried out meanwhile.
    std::vector<quint32> values = valuesOneByOne(controller, where);
    for (std::vector<quint32> before; values != before;) {
        before = values;
        values = valuesOneByOne(controller, where);
    }
    return values;
}

Writer::Writer(Rig& rig, Watchdog::Watch& watch, const std::vector<std::size_t>& own, unsigned seed)
    : m_rig(rig), m_watch(watch), m_own(own), m_random(seed)
{
}

void Writer::run()
{
    while (!m_rig.over) {
        writeSome();
        QThread::msleep(static_cast<unsigned long>(below(longestPauseMs)));
    }
}

void Writer::writeSome()
{
    std::vector<Sent> sent;
    for (std::size_t count = 1 + below(mostAtOnce); sent.size() < count;)
        sent.push_back(write(m_own[below(m_own.size())]));
    for (const Sent& one : sent)
        finish(one);
    for (const Sent& one : sent)
        compare(one.index);
}

Writer::Sent Writer::write(std::size_t index)
{
    const SoakVariable& variable = m_rig.variables[index];
    const quint32 serial = m_rig.referee.issue(index);
    m_watch.begin(QStringLiteral("hands over a write to ") + plc::variableText(variable.where));
    return {index, serial, m_rig.runtime.write(variable.where, valuesOf(variable, serial))};
}

plc::WriteOutcome Writer::finish(const Sent& sent)
{
    m_watch.begin(QStringLiteral("waits for the end of write %1 to %2")
                      .arg(sent.serial)
                      .arg(plc::variableText(m_rig.variables[sent.index].where)));
    const plc::WriteOutcome outcome = sent.pending.get();
    m_watch.end();
    m_rig.referee.ended(sent.index, sent.serial, outcome);
    ++(outcome.confirmed ? m_rig.writesConfirmed : m_rig.writesFailed);
    return outcome;
}

void Writer::compare(std::size_t index)
{
    m_rig.referee.inController(index, valuesInController(m_rig.controller, m_rig.variables[index].where));
}

bool Writer::confirmAll()
{
    return std::all_of(m_own.begin(), m_own.end(), [this](std::size_t index) { return confirm(index); });
}

bool Writer::confirm(std::size_t index)
{
    for (int turn = 0; turn < mostTurns; ++turn) {
        const bool confirmed = finish(write(index)).confirmed;
        compare(index);
        if (confirmed)
            return true;
    }
    return false;
}

void readUntilOver(Rig& rig, Watchdog::Watch& watch, unsigned seed)
{
    std::mt19937 random(seed);
    while (!rig.over) {
        const std::size_t index = random() % rig.variables.size();
        const plc::Variable& where = rig.variables[index].where;
        watch.begin(QStringLiteral("waits for the end of a read of ") + plc::variableText(where));
        const quint32 confirmedBefore = rig.referee.lastConfirmed(index);
        const plc::ReadOutcome outcome = rig.runtime.read(where).get();
        watch.end();
        if (outcome.done)
            rig.referee.read(index, confirmedBefore, outcome.values);
        ++(outcome.done ? rig.readsDone : rig.readsFailed);
        QThread::msleep(readPauseMs);
    }
}

void lookUntilOver(Rig& rig, Watchdog::Watch& watch)
{
    while (!rig.over) {
        watch.begin(QStringLiteral("looks at the cyclic values"));
        for (std::size_t index = 0; index < rig.cyclic.size(); ++index) {
            const quint32 confirmedBefore = rig.referee.lastConfirmed(index);
            const plc::CyclicValue value = rig.runtime.value(rig.cyclic[index]);
            rig.referee.shown(index, confirmedBefore, value);
            ++rig.looks;
            if (value.state == plc::ValueState::Fresh)
                ++rig.freshLooks;
        }
        QThread::msleep(lookPauseMs);
    }
}

void switchUntilOver(Rig& rig, Watchdog::Watch& watch, const std::vector<int>& stations, unsigned seed)
{
    std::mt19937 random(seed);
    while (!rig.over) {
        QThread::msleep(random() % longestOnMs);
        const int station = stations[random() % stations.size()];
        watch.begin(QStringLiteral("switches station %1").arg(station));
        rig.runtime.setStation(station, false);
        QThread::msleep(random() % longestOffMs);
        rig.runtime.setStation(station, true);
        watch.end();
        ++rig.switches;
    }
}

} // namespace soak
