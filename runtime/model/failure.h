// SPDX-License-Identifier: MIT
/// \file
/// \brief Why a request brought nothing, as a type: words are made of it where a person reads them.
#ifndef RUNTIME_MODEL_FAILURE_H
#define RUNTIME_MODEL_FAILURE_H

#include "runtime/export.h"

#include <QString>

#include <tuple>

namespace plc
{

enum class FailureKind {
    None, ///< it has not failed

    // Nothing went out.
    Invalid,    ///< this cannot be asked for; Failure::detail says why
    NotRunning, ///< the runtime is not running
    NotTried,   ///< the controller was found out of reach before
    StationOff, ///< Failure::station is switched off
    NotTaken,   ///< the driver refuses it; Failure::detail names the elements
    Discarded,  ///< its station was switched off while it waited
    Replaced,   ///< a newer write to the same elements took its place
    Purged,     ///< it went with another request that was given up, see Failure::cause

    // It was given up after its last try.
    NotConnected,  ///< which found no connection; Failure::detail says why there is none
    NoReply,       ///< nothing came within Failure::timeoutMs
    LateReply,     ///< the same, but replies to earlier requests came
    OtherUnit,     ///< the same, but unit Failure::seen answered
    OtherFunction, ///< the same, but replies to function Failure::seen came
    OtherNumber, ///< the same, but replies with transaction number Failure::seen came, which was not asked with
    OtherElements,  ///< the same, but remote replies for other elements than those asked for came
    NoProtocol,     ///< what came is not in the form of the protocol
    Closed,         ///< the controller closed the connection instead of answering
    ClosedAtOnce,   ///< the same, and it had not answered anything on that connection
    Exception,      ///< the controller answered with Failure::exception
    Acknowledged,   ///< the controller took Failure::detail and is still at work on it; it was not sent again
    BadReply,       ///< the driver could not use the reply; Failure::code says why
    OtherAddress,   ///< the reply to a write names another address
    OtherValue,     ///< the reply to a write of one coil or register names another value
    OtherQuantity,  ///< the reply to a write of several registers names another number of them
    OtherByteCount, ///< the reply to a read counts other bytes than those of what was asked for

    // How far it came is not known.
    Stopped,    ///< the runtime was stopped before it ended
    OutOfStep,  ///< the driver's list of requests is not what it must be
    NotReported ///< the driver did not report the end of a read
};

/// What does not belong to the kind is as it is here.
struct Failure {
    Failure() = default;
    explicit Failure(FailureKind aKind, const QString& someDetail = QString())
        : kind(aKind), detail(someDetail)
    {
    }

    FailureKind kind = FailureKind::None;
    FailureKind cause = FailureKind::None; ///< Purged: the kind of the other's failure, whose members follow
    int code = 0;      ///< the driver's result code (PLC_RESULT) of the last try; 0: there was none
    int exception = 0; ///< Modbus exception code
    int timeoutMs = 0;
    int station = -1;
    int seen = -1;  ///< what a reply carried that is no answer
    QString detail; ///< for people, never to be looked into
};

inline bool hasFailed(const Failure& failure)
{
    return failure.kind != FailureKind::None;
}

/// \return true when no frame went out for a request that ended so: the controller cannot have carried it out
PLCRUNTIME_API bool isUnsent(FailureKind kind);

inline bool operator==(const Failure& a, const Failure& b)
{
    return std::tie(a.kind, a.cause, a.code, a.exception, a.timeoutMs, a.station, a.seen, a.detail) ==
           std::tie(b.kind, b.cause, b.code, b.exception, b.timeoutMs, b.station, b.seen, b.detail);
}

} // namespace plc

#endif
