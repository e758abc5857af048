// SPDX-License-Identifier: MIT
#include "runtime/modbus/failure_words.h"

#include "runtime/modbus/exception_words.h"
#include "runtime/modbus/protocol.h"
#include "runtime/modbus/reply_fault.h"
#include "runtime/modbus/return_code_words.h"

namespace plc
{

namespace
{

enum Asked { Write, Read };

/// For what needs nothing but its kind.
struct PlainWords {
    FailureKind kind;
    const char* ofWrite;
    const char* ofRead;
};

const char noProtocol[] = "what came is no reply of the protocol; check the port (--controller HOST:PORT)";
const char closed[] = "the controller closed the connection instead of answering";
const char closedAtOnce[] =
    "the controller closed the connection at once: another master may hold its only one";

const PlainWords plainWords[] = {
    {FailureKind::NotRunning, "the panel is not running", "the panel is not running"},
    {FailureKind::NotTried, "not tried, because the controller cannot be reached",
     "not tried, because the controller cannot be reached"},
    {FailureKind::NoProtocol, noProtocol, noProtocol},
    {FailureKind::Closed, closed, closed},
    {FailureKind::ClosedAtOnce, closedAtOnce, closedAtOnce},
    {FailureKind::Discarded, "its station was switched off before it was sent",
     "its station was switched off before it was read"},
    {FailureKind::Replaced, "replaced by a newer write before it was sent", ""},
    {FailureKind::Stopped, "the panel was stopped before it was confirmed; it may have been sent",
     "the panel was stopped before it was read"},
    {FailureKind::OutOfStep,
     "the driver's list of writes is not what it must be; nothing is known about this write",
     "the driver's list of one-shot reads is not what it must be"},
    {FailureKind::NotReported, "", "the driver did not report the end of this read"},
};

QString plain(FailureKind kind, Asked asked)
{
    for (const PlainWords& row : plainWords) {
        if (row.kind == kind)
            return QLatin1String(asked == Write ? row.ofWrite : row.ofRead);
    }
    return QString();
}

QString purged(const Failure& failure, Asked asked)
{
    Failure cause = failure;
    cause.kind = failure.cause;
    return QStringLiteral("given up %1 with another request that failed: %2")
        .arg(QLatin1String(asked == Write ? "unsent" : "unread"), failureWords(cause));
}

QString notTaken(const Failure& failure, Asked asked)
{
    return QStringLiteral("the driver takes no %1 %2")
        .arg(QLatin1String(asked == Write ? "write to" : "read of"), failure.detail);
}

QString acknowledged(const Failure& failure)
{
    return QStringLiteral(
               "the controller took %1 and is still at work on it (exception %2); nothing was sent "
               "again")
        .arg(failure.detail, QString::number(failure.exception));
}

/// Nothing can be read from the broadcast's number, so there is no use in trying it.
QString otherUnit(int unit)
{
    if (unit == broadcastStation)
        return QStringLiteral(
            "; unit 0 answered, which is none: a gateway or controller has to repeat that of the "
            "request");
    return QStringLiteral("; unit %1 answered: try --station %1").arg(unit);
}

/// \return what came in place of the reply, and what to try; empty when nothing did
QString seenWords(const Failure& failure)
{
    switch (failure.kind) {
    case FailureKind::LateReply:
        return QStringLiteral("; replies came later: try a longer --timeout");
    case FailureKind::OtherUnit:
        return otherUnit(failure.seen);
    case FailureKind::OtherFunction:
        return QStringLiteral("; replies to function %1 came, which was not asked for").arg(failure.seen);
    case FailureKind::OtherNumber:
        return QStringLiteral(
                   "; replies came with transaction number %1, which is not that of the request: a gateway "
                   "or controller has to repeat it")
            .arg(failure.seen);
    case FailureKind::OtherElements:
        return QStringLiteral("; replies came for other elements than those asked for");
    default:
        return QString();
    }
}

QString noReply(const Failure& failure)
{
    const QString words = resultWords(failure.code);
    return failure.timeoutMs == 0 ? words
                                  : QStringLiteral("%1 within %2 ms").arg(words).arg(failure.timeoutMs);
}

QString wordsOf(const Failure& failure, Asked asked)
{
    switch (failure.kind) {
    case FailureKind::Invalid:
    case FailureKind::NotConnected:
        return failure.detail;
    case FailureKind::StationOff:
        return QStringLiteral("station %1 is switched off").arg(failure.station);
    case FailureKind::NotTaken:
        return notTaken(failure, asked);
    case FailureKind::Purged:
        return purged(failure, asked);
    case FailureKind::NoReply:
    case FailureKind::LateReply:
    case FailureKind::OtherUnit:
    case FailureKind::OtherFunction:
    case FailureKind::OtherNumber:
    case FailureKind::OtherElements:
        return noReply(failure) + seenWords(failure);
    case FailureKind::Exception:
        return QStringLiteral("the controller refused it: exception %1, %2")
            .arg(failure.exception)
            .arg(exceptionWords(failure.exception));
    case FailureKind::Acknowledged:
        return acknowledged(failure);
    case FailureKind::BadReply:
        return resultWords(failure.code);
    case FailureKind::OtherAddress:
    case FailureKind::OtherValue:
    case FailureKind::OtherQuantity:
    case FailureKind::OtherByteCount:
        return replyFaultWords(failure.kind);
    default:
        return plain(failure.kind, asked);
    }
}

QString withCode(const QString& words, int code)
{
    return code == 0 ? words : QStringLiteral("%1 (return code %2)").arg(words).arg(code);
}

} // namespace

QString failureWords(const WriteOutcome& outcome)
{
    return wordsOf(outcome.failure, Write);
}

QString failureWords(const ReadOutcome& outcome)
{
    return wordsOf(outcome.failure, Read);
}

QString failureWords(const Failure& failure)
{
    return wordsOf(failure, Read);
}

QString failureText(const WriteOutcome& outcome)
{
    return withCode(failureWords(outcome), outcome.failure.code);
}

QString failureText(const ReadOutcome& outcome)
{
    return withCode(failureWords(outcome), outcome.failure.code);
}

QString failureText(const Failure& failure)
{
    return withCode(failureWords(failure), failure.code);
}

QString noConnectionWords(const QString& host, int port, const QString& error)
{
    return QStringLiteral("no connection to %1:%2 (%3)").arg(host, QString::number(port), error);
}

} // namespace plc
