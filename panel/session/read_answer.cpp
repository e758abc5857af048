// SPDX-License-Identifier: MIT
#include "panel/session/read_answer.h"

#include "runtime/modbus/exception_words.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/protocol.h"

namespace plc
{

namespace
{

/// Others are not about the addresses: the controller is at work, or a gateway reaches it not.
bool isAboutTheRequest(int exception)
{
    return exception != Acknowledge && exception != DeviceBusy && !isFromGateway(exception);
}

} // namespace

ReadAnswer answerOf(const ReadOutcome& outcome)
{
    const Failure& failure = outcome.failure;
    if (!hasFailed(failure))
        return {};
    if (failure.kind == FailureKind::NotConnected)
        return {ReadAnswer::NotConnected, failureWords(outcome), failure.exception, true};
    if (failure.kind == FailureKind::Acknowledged)
        return {ReadAnswer::Unanswered, failureWords(outcome), failure.exception};
    if (failure.kind != FailureKind::Exception || !isAboutTheRequest(failure.exception))
        return {ReadAnswer::Unanswered, failureWords(outcome), failure.exception, true};
    return {ReadAnswer::Refused,
            QStringLiteral("exception %1, %2").arg(failure.exception).arg(exceptionWords(failure.exception)),
            failure.exception};
}

} // namespace plc
