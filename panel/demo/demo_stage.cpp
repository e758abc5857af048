// SPDX-License-Identifier: MIT
#include "panel/demo/demo_stage.h"

#include "runtime/cycle/exchange_record.h"
#include "runtime/host/request_keys.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/value_text.h"

#include <QElapsedTimer>

#include <chrono>
#include <thread>

namespace plc
{

namespace
{

// How long something may take that must happen. Nothing is compared with the time that it really takes.
const int patienceMs = 10000;
const int lookMs = 5;

bool waitUntil(const std::function<bool()>& happened)
{
    QElapsedTimer clock;
    clock.start();
    while (!happened()) {
        if (clock.elapsed() > patienceMs)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(lookMs));
    }
    return true;
}

QString valueList(int area, const Values& values)
{
    return valueTexts(area, values, ValueFormat::Decimal).join(QLatin1Char(' '));
}

void compare(bool right, const QString& otherwise, DemoStep* step)
{
    if (right)
        ++step->right;
    else
        step->wrong << otherwise;
}

void compareValues(int area, const Values& is, const Values& expected, const QString& whose, DemoStep* step)
{
    for (std::size_t index = 0; index < expected.size(); ++index) {
        const bool right = index < is.size() && is[index] == expected[index];
        compare(right,
                QStringLiteral("%1: value %2 of %3; is \"%4\", must be \"%5\"")
                    .arg(whose)
                    .arg(index + 1)
                    .arg(expected.size())
                    .arg(valueList(area, is), valueList(area, expected)),
                step);
    }
}

/// One thing compared, however it is wrong.
void compareFailure(const Failure& is, FailureKind expected, const QString& what, DemoStep* step)
{
    compare(is.kind == expected,
            hasFailed(is) ? QStringLiteral("%1 must fail for another reason").arg(what)
                          : QStringLiteral("%1 must fail").arg(what),
            step);
}

void tell(const WriteOutcome& outcome, DemoStep* step)
{
    step->result = outcome.confirmed ? QStringLiteral("confirmed") : QStringLiteral("not written");
    if (!outcome.confirmed)
        step->note = QStringLiteral("because: ") + failureText(outcome);
}

void tell(int area, const ReadOutcome& outcome, DemoStep* step)
{
    step->result = outcome.done ? valueList(area, outcome.values) : QStringLiteral("not read");
    if (!outcome.done)
        step->note = QStringLiteral("because: ") + failureText(outcome);
}

/// Values that differ from \a values in every bit.
Values opposite(int area, const Values& values)
{
    Values others;
    for (const quint32 value : values) {
        const bool bit = kindOf(area) == ElementKind::Bit || kindOf(area) == ElementKind::BitInWord;
        const quint32 mask = bit ? 1 : kindOf(area) == ElementKind::Word ? 0xFFFF : 0xFFFFFFFF;
        others.push_back(value ^ mask);
    }
    return others;
}

} // namespace

DemoStage::DemoStage(const Settings& settings, const std::vector<Variable>& cyclic,
                     const Listeners& listeners, DemoController* controller, DemoReport* report)
    : m_multiStation(settings.multiStation), m_cyclic(cyclic), m_controller(controller), m_report(report),
      m_session(settings, withOwn(listeners))
{
    for (const Variable& variable : m_cyclic)
        m_session.runtime().addCyclic(variable);
    m_session.runtime().start();
}

Listeners DemoStage::withOwn(Listeners listeners)
{
    listeners.exchanges = [this, others = listeners.exchanges](const ExchangeRecord& record) {
        if (others)
            others(record);
        collect(record);
    };
    return listeners;
}

/// Cyclic reads go on all the time and would hide the frames of the step.
void DemoStage::collect(const ExchangeRecord& record)
{
    const int key = record.request.hostKey;
    if (key != writeKey && key != onceReadKey)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_exchanges.push_back(record);
}

DemoStep DemoStage::begin(const QString& what)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_exchanges.clear();
    DemoStep step;
    step.what = what;
    return step;
}

void DemoStage::finish(DemoStep* step)
{
    m_session.settle();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        step->exchanges = m_exchanges;
    }
    m_report->add(*step);
}

QString DemoStage::nameOf(const Variable& variable) const
{
    Variable named = variable;
    if (!m_multiStation)
        named.station = -1; // there is but one
    return variableText(named);
}

QString DemoStage::writeName(const Variable& variable, const Values& values) const
{
    return QStringLiteral("write %1 = %2").arg(nameOf(variable), valueList(variable.area, values));
}

void DemoStage::compareMemory(const Variable& variable, const Values& expected, DemoStep* step)
{
    const Values values = m_controller->get(variable);
    step->controller =
        QStringLiteral("%1: %2").arg(DemoController::placeText(variable), valueList(variable.area, values));
    compareValues(variable.area, values, expected, QStringLiteral("controller's memory"), step);
}

void DemoStage::write(const Variable& variable, const Values& values)
{
    m_controller->set(variable, opposite(variable.area, values));
    const Variable words = wordsOf(variable);
    m_controller->set(variable, values);
    const Values wordsAfterwards = m_controller->get(words);
    m_controller->set(variable, opposite(variable.area, values));

    DemoStep step = begin(writeName(variable, values));
    const WriteOutcome outcome = m_session.runtime().write(variable, values).get();
    tell(outcome, &step);
    compare(outcome.confirmed, QStringLiteral("the write is not confirmed"), &step);
    compareMemory(variable, values, &step);
    if (words.area != variable.area)
        compareValues(words.area, m_controller->get(words), wordsAfterwards, QStringLiteral("the bit's word"),
                      &step);
    finish(&step);
}

void DemoStage::read(const Variable& variable, const Values& values)
{
    m_controller->set(variable, values);
    DemoStep step = begin(QStringLiteral("read  ") + nameOf(variable));
    const ReadOutcome outcome = m_session.runtime().read(variable).get();
    tell(variable.area, outcome, &step);
    compareValues(variable.area, outcome.values, values, QStringLiteral("read"), &step);
    compareMemory(variable, values, &step);
    finish(&step);
}

void DemoStage::writeFails(const Variable& variable, const Values& values, FailureKind kind)
{
    const Values before = opposite(variable.area, values);
    m_controller->set(variable, before);
    DemoStep step = begin(writeName(variable, values));
    const WriteOutcome outcome = m_session.runtime().write(variable, values).get();
    tell(outcome, &step);
    compareFailure(outcome.failure, kind, QStringLiteral("the write"), &step);
    compareMemory(variable, before, &step);
    finish(&step);
}

void DemoStage::readFails(const Variable& variable, FailureKind kind)
{
    DemoStep step = begin(QStringLiteral("read  ") + nameOf(variable));
    const ReadOutcome outcome = m_session.runtime().read(variable).get();
    tell(variable.area, outcome, &step);
    compareFailure(outcome.failure, kind, QStringLiteral("the read"), &step);
    finish(&step);
}

void DemoStage::shows(int index, const Values& values)
{
    const Variable& variable = m_cyclic[static_cast<std::size_t>(index)];
    DemoStep step = begin(QStringLiteral("watch ") + nameOf(variable));
    m_controller->set(variable, values);
    CyclicValue value;
    waitUntil([&] {
        value = m_session.runtime().value(index);
        return value.state == ValueState::Fresh && value.values == values;
    });
    step.result =
        QStringLiteral("%1 (%2)").arg(valueList(variable.area, value.values), valueStateWord(value.state));
    compare(value.state == ValueState::Fresh, QStringLiteral("the value must be fresh"), &step);
    compareValues(variable.area, value.values, values, QStringLiteral("watched"), &step);
    compareMemory(variable, values, &step);
    finish(&step);
}

void DemoStage::looksOld(int index, ValueState state)
{
    const Variable& variable = m_cyclic[static_cast<std::size_t>(index)];
    DemoStep step = begin(QStringLiteral("watch ") + nameOf(variable));
    CyclicValue value;
    waitUntil([&] {
        value = m_session.runtime().value(index);
        return value.state == state;
    });
    step.result =
        QStringLiteral("(%1) (%2)").arg(valueList(variable.area, value.values), valueStateWord(value.state));
    compare(value.state == state, QStringLiteral("the state must be \"%1\"").arg(valueStateWord(state)),
            &step);
    step.controller = QStringLiteral("%1: %2").arg(DemoController::placeText(variable),
                                                   valueList(variable.area, m_controller->get(variable)));
    finish(&step);
}

bool DemoStage::waitForRequests(int station, int number)
{
    const long goal = m_controller->requestsTo(station) + number;
    return waitUntil([&] { return m_controller->requestsTo(station) >= goal; });
}

void DemoStage::isNotRead(int index, const Values& values, int other)
{
    const Variable& variable = m_cyclic[static_cast<std::size_t>(index)];
    const int otherStation = m_cyclic[static_cast<std::size_t>(other)].station;
    DemoStep step = begin(QStringLiteral("watch ") + nameOf(variable));
    waitForRequests(otherStation, 2); // whatever was on its way has ended
    m_controller->set(variable, values);
    const long before = m_controller->requestsTo(variable.station);
    const bool otherGoesOn = waitForRequests(otherStation, 3);
    const long asked = m_controller->requestsTo(variable.station) - before;
    const CyclicValue value = m_session.runtime().value(index);
    step.result =
        QStringLiteral("(%1) (%2)").arg(valueList(variable.area, value.values), valueStateWord(value.state));
    step.controller =
        QStringLiteral("holds %1, was asked %2 times").arg(valueList(variable.area, values)).arg(asked);
    compare(asked == 0, QStringLiteral("station %1 was asked").arg(variable.station), &step);
    compare(otherGoesOn, QStringLiteral("station %1 must go on").arg(otherStation), &step);
    compare(value.state == ValueState::StationOff, QStringLiteral("the value must look old"), &step);
    finish(&step);
}

void DemoStage::writeIsDiscarded(const Variable& variable, const Values& values, const Variable& other,
                                 const Values& otherValues)
{
    const Values before = opposite(variable.area, values);
    m_controller->set(variable, before);
    DemoStep step = begin(writeName(variable, values));
    m_controller->setSilent(other.station, true);
    const Pending<WriteOutcome> first = m_session.runtime().write(other, otherValues);
    const Pending<WriteOutcome> second = m_session.runtime().write(variable, values);
    m_session.runtime().setStation(variable.station, false);
    m_controller->setSilent(other.station, false);
    compare(first.get().confirmed, QStringLiteral("the write before it is not confirmed"), &step);
    const WriteOutcome outcome = second.get();
    tell(outcome, &step);
    compare(outcome.failure.kind == FailureKind::Discarded, QStringLiteral("the write must be discarded"),
            &step);
    compareMemory(variable, before, &step);
    finish(&step);
}

void DemoStage::switchStation(int station, bool on)
{
    DemoStep step =
        begin(QStringLiteral("switch station %1 %2").arg(station).arg(QLatin1String(on ? "on" : "off")));
    m_session.runtime().setStation(station, on);
    finish(&step);
}

void DemoStage::setSilent(int station, bool silent)
{
    DemoStep step = begin(QStringLiteral("station %1 %2")
                              .arg(station)
                              .arg(QLatin1String(silent ? "falls silent" : "answers again")));
    // Right after a pass no request is on its way, so the next one to meet the silence is the next step's.
    const long passes = m_session.runtime().statistics().passes;
    waitUntil([&] { return !silent || m_session.runtime().statistics().passes > passes; });
    m_controller->setSilent(station, silent);
    finish(&step);
}

} // namespace plc
