// SPDX-License-Identifier: MIT
#include "soak/referee.h"
#include "runtime/cycle/exchange_record.h"

#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/return_codes.h"
#include "runtime/model/modbus_address.h"

#include <QStringList>

namespace soak
{

namespace
{

const std::size_t framesToPrint = 12;

Address addressOf(const plc::Variable& where)
{
    return {where.station, plc::liesInCoils(where.area), plc::modbusAddress(where.area, where.element)};
}

/// \return the value of each element; a double word takes two registers, its low half first
std::vector<quint32> valuesIn(const WriteFrame& frame, const plc::Variable& where)
{
    std::vector<quint32> values;
    const std::size_t step = plc::kindOf(where.area) == plc::ElementKind::DoubleWord ? 2 : 1;
    for (std::size_t at = 0; at + step <= frame.content.size(); at += step) {
        const auto low = static_cast<quint32>(frame.content[at]);
        values.push_back(step == 1 ? low : low | static_cast<quint32>(frame.content[at + 1]) << 16);
    }
    return values;
}

simulator::Bytes bytesOf(const QByteArray& frame)
{
    return simulator::Bytes(frame.begin(), frame.end());
}

QString hexOf(const simulator::Bytes& bytes)
{
    const QByteArray all(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
    return QString::fromLatin1(all.toHex(' '));
}

QLatin1String nameOf(simulator::Fault fault)
{
    for (const simulator::FaultKind& kind : simulator::faultList()) {
        if (kind.fault == fault)
            return QLatin1String(kind.name);
    }
    return QLatin1String("-");
}

WriteEnd endOf(const plc::WriteOutcome& outcome)
{
    if (outcome.confirmed)
        return WriteEnd::Confirmed;
    return plc::isUnsent(outcome.failure.kind) ? WriteEnd::Unsent : WriteEnd::Failed;
}

bool isConsistent(const plc::WriteOutcome& outcome)
{
    return outcome.confirmed == (outcome.requestsConfirmed == outcome.requests) &&
           outcome.confirmed != plc::hasFailed(outcome.failure) && outcome.requests > 0;
}

QString listed(const std::vector<quint32>& values)
{
    QStringList words;
    for (const quint32 value : values)
        words += QString::number(value, 16);
    return words.join(QLatin1Char(' '));
}

} // namespace

Referee::Referee(const std::vector<SoakVariable>& variables, int tries, bool isRemote, Complaints& complaints)
    : m_isRemote(isRemote), m_complaints(complaints)
{
    for (const SoakVariable& variable : variables) {
        if (variable.isWritten)
            m_places.emplace(addressOf(variable.where), m_histories.size());
        m_histories.emplace_back(variable, tries);
    }
}

quint32 Referee::issue(std::size_t index)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_histories[index].issue();
}

void Referee::ended(std::size_t index, quint32 serial, const plc::WriteOutcome& outcome)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!isConsistent(outcome))
        complain(index, QStringLiteral("write %1 ended with %2 of %3 requests confirmed and the reason '%4'")
                            .arg(serial)
                            .arg(outcome.requestsConfirmed)
                            .arg(outcome.requests)
                            .arg(plc::failureWords(outcome)));
    complain(index, m_histories[index].ended(serial, endOf(outcome)));
}

void Referee::traced(const simulator::TraceEntry& entry)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    remember(entry);
    if (!entry.isReply)
        received(entry.bytes);
    else if (m_lastReceived != nothing && simulator::isExecuted(entry.fault))
        m_histories[m_lastReceived].carriedOut();
}

void Referee::remember(const simulator::TraceEntry& entry)
{
    m_lastFrames.push_back({entry.connection, entry.isReply, entry.fault, entry.bytes});
    if (m_lastFrames.size() > framesToPrint)
        m_lastFrames.pop_front();
}

/// \return what the controller received and sent last, one frame a line
QString Referee::lastFrames() const
{
    QString text;
    for (const Frame& frame : m_lastFrames)
        text += QStringLiteral("    %1 %2 %3 %4\n")
                    .arg(frame.connection)
                    .arg(QLatin1String(frame.isReply ? "->" : "<-"))
                    .arg(nameOf(frame.fault), -10)
                    .arg(hexOf(frame.bytes));
    return text;
}

void Referee::received(const simulator::Bytes& frame)
{
    m_lastReceived = nothing;
    const std::optional<WriteFrame> write = writeOf(frame, m_isRemote);
    if (!write)
        return;
    const std::size_t index = variableAt(write->first);
    if (index == nothing) {
        m_complaints.add(QStringLiteral("%1 %2 of unit %3 was written, which nobody asked for")
                             .arg(QLatin1String(write->first.isCoil ? "coil" : "register"))
                             .arg(write->first.number)
                             .arg(write->first.unit));
        return;
    }
    if (!namesItsWrites(m_histories[index].variable()))
        return;
    const QString wrong = m_histories[index].received(valuesIn(*write, m_histories[index].variable().where));
    complain(index, wrong);
    if (wrong.isEmpty())
        m_lastReceived = index;
}

std::size_t Referee::variableAt(const Address& address) const
{
    const auto found = m_places.find(address);
    return found == m_places.end() ? nothing : found->second;
}

void Referee::exchanged(const plc::ExchangeRecord& record)
{
    if (!plc::isSuccess(record.result))
        return;
    const std::optional<WriteFrame> write = writeOf(bytesOf(record.frame), m_isRemote);
    if (!write)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::size_t index = variableAt(write->first);
    if (index != nothing)
        m_histories[index].replied(valuesIn(*write, m_histories[index].variable().where));
}

quint32 Referee::lastConfirmed(std::size_t index) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_histories[index].lastConfirmed();
}

/// Old values and such that are on their way. With remote frames the panel asks for each double word alone.
bool Referee::mayBeOld(const History& history, const std::vector<quint32>& values) const
{
    const bool inParts =
        m_isRemote && plc::kindOf(history.variable().where.area) == plc::ElementKind::DoubleWord;
    return inParts ? history.wereIssuedOneByOne(values) : history.wereIssued(values);
}

void Referee::shown(std::size_t index, quint32 confirmedBefore, const plc::CyclicValue& value)
{
    if (value.state == plc::ValueState::NeverRead)
        return;
    const bool isFresh = value.state == plc::ValueState::Fresh;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const History& history = m_histories[index];
    if (isFresh ? !history.mayHaveHeld(confirmedBefore, value.values) : !mayBeOld(history, value.values))
        complainOfValues(index, value.values,
                         QStringLiteral("shown as %1").arg(plc::valueStateWord(value.state)));
}

void Referee::read(std::size_t index, quint32 confirmedBefore, const std::vector<quint32>& values)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_histories[index].mayHaveHeld(confirmedBefore, values))
        complainOfValues(index, values, QStringLiteral("read"));
}

void Referee::inController(std::size_t index, const std::vector<quint32>& values)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_histories[index].mayHold(values))
        complainOfValues(index, values, QStringLiteral("in the controller"));
}

void Referee::complain(std::size_t index, const QString& what)
{
    if (what.isEmpty())
        return;
    const QString place = plc::variableText(m_histories[index].variable().where);
    m_complaints.add(QStringLiteral("%1: %2").arg(place, what), lastFrames());
}

void Referee::complainOfValues(std::size_t index, const std::vector<quint32>& values, const QString& where)
{
    const History& history = m_histories[index];
    const std::vector<quint32> confirmed = valuesOf(history.variable(), history.lastConfirmed());
    complain(index,
             QStringLiteral("%1 is %2; write %3 of %4 was confirmed last, with %5, and nothing later fits")
                 .arg(where, listed(values))
                 .arg(history.lastConfirmed())
                 .arg(history.lastIssued())
                 .arg(listed(confirmed)));
}

} // namespace soak
