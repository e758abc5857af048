// SPDX-License-Identifier: MIT
/// \file
/// \brief Sees both sides of a soak run, the panel's words and the controller's requests, and compares them.
#ifndef SOAK_REFEREE_H
#define SOAK_REFEREE_H

#include "runtime/cycle/runtime.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/outcome.h"
#include "simulator/simulated_controller.h"
#include "soak/complaints.h"
#include "soak/history.h"
#include "soak/write_frame.h"

#include <deque>
#include <map>
#include <mutex>
#include <vector>

namespace soak
{

/// Variables are known by their index. Any thread may call any function; the writes to one variable belong to
/// one thread.
class Referee
{
public:
    /// \param tries that a request has, the first included
    Referee(const std::vector<SoakVariable>& variables, int tries, bool isRemote, Complaints& complaints);

    /// To be called before the write is handed to the panel. \return its number
    quint32 issue(std::size_t index);

    /// The panel reported how the write ended.
    void ended(std::size_t index, quint32 serial, const plc::WriteOutcome& outcome);

    /// The controller received a request or decided on a reply. On its thread.
    void traced(const simulator::TraceEntry& entry);

    /// The panel has judged a reply. On its communication thread.
    void exchanged(const plc::ExchangeRecord& record);

    /// To be asked before a value is looked at or read.
    quint32 lastConfirmed(std::size_t index) const;

    /// The panel shows this. \param confirmedBefore lastConfirmed() before it was asked
    void shown(std::size_t index, quint32 confirmedBefore, const plc::CyclicValue& value);

    /// A one-shot read gave this. \param confirmedBefore lastConfirmed() before it was asked for
    void read(std::size_t index, quint32 confirmedBefore, const std::vector<quint32>& values);

    /// The controller's memory holds this while no write to the variable is open.
    void inController(std::size_t index, const std::vector<quint32>& values);

private:
    /// simulator::TraceEntry, with bytes of its own.
    struct Frame {
        unsigned long connection;
        bool isReply;
        simulator::Fault fault;
        simulator::Bytes bytes;
    };

    static const std::size_t nothing = static_cast<std::size_t>(-1);

    void remember(const simulator::TraceEntry& entry);
    QString lastFrames() const;
    void received(const simulator::Bytes& frame);
    std::size_t variableAt(const Address& address) const;
    bool mayBeOld(const History& history, const std::vector<quint32>& values) const;
    void complain(std::size_t index, const QString& what);
    void complainOfValues(std::size_t index, const std::vector<quint32>& values, const QString& where);

    const bool m_isRemote;
    Complaints& m_complaints;
    mutable std::mutex m_mutex;
    std::vector<History> m_histories;
    std::map<Address, std::size_t> m_places;
    std::deque<Frame> m_lastFrames;
    std::size_t m_lastReceived = nothing; // variable that the request being answered writes
};

} // namespace soak

#endif
