// SPDX-License-Identifier: MIT
#include "runtime/link/silence.h"

#include "runtime/modbus/frame_fields.h"

namespace plc
{

namespace
{

// How many requests ago a reply that comes late may have been asked for.
const int mostBehind = 64;

const int numbers = 0xFFFF; // 1 to 65535; 0 is not used

bool isLate(const DroppedReply& dropped, const QByteArray& sentFrame)
{
    const int number = wordAt(dropped.reply, numberOffset);
    const int behind = (wordAt(sentFrame, numberOffset) - number + numbers) % numbers;
    return number != 0 && behind <= mostBehind;
}

void tellNumber(const DroppedReply& dropped, const QByteArray& sentFrame, Failure* failure)
{
    failure->kind = FailureKind::LateReply;
    if (isLate(dropped, sentFrame))
        return;
    failure->kind = FailureKind::OtherNumber;
    failure->seen = wordAt(dropped.reply, numberOffset);
}

void tellDropped(const DroppedReply& dropped, const QByteArray& sentFrame, Failure* failure)
{
    switch (dropped.reason) {
    case DropReason::Late:
        return tellNumber(dropped, sentFrame, failure);
    case DropReason::Doubled:
        return;
    case DropReason::WrongUnit:
        failure->kind = FailureKind::OtherUnit;
        failure->seen = byteAt(dropped.reply, unitOffset);
        return;
    case DropReason::WrongFunction:
        failure->kind = FailureKind::OtherFunction;
        failure->seen = byteAt(dropped.reply, functionOffset) & ~exceptionFlag;
        return;
    case DropReason::WrongArea:
    case DropReason::WrongSize:
    case DropReason::WrongElements:
        failure->kind = FailureKind::OtherElements;
        return;
    }
}

} // namespace

Failure silenceFailure(int code, const LinkExchange& exchange, int timeoutMs)
{
    Failure failure(FailureKind::NoReply);
    failure.code = code;
    failure.timeoutMs = exchange.outOfStep ? 0 : timeoutMs; // it was not waited to the end
    for (const DroppedReply& dropped : exchange.dropped)
        tellDropped(dropped, exchange.sentFrame, &failure);
    if (exchange.outOfStep && exchange.dropped.empty())
        failure.kind = FailureKind::NoProtocol;
    if (exchange.closed)
        failure.kind = exchange.answeredBefore ? FailureKind::Closed : FailureKind::ClosedAtOnce;
    return failure;
}

} // namespace plc
