// SPDX-License-Identifier: MIT
#include "runtime/modbus/reply_failure.h"

#include "runtime/modbus/frame_fields.h"

namespace plc
{

Failure replyFailure(int code, FailureKind fault, const QByteArray& reply, int timeoutMs)
{
    Failure failure;
    failure.code = code;
    if (reply.isEmpty()) {
        failure.kind = FailureKind::NoReply;
        failure.timeoutMs = timeoutMs;
        return failure;
    }
    failure.kind = fault == FailureKind::None ? FailureKind::BadReply : fault;
    failure.exception = fault == FailureKind::Exception ? exceptionCode(reply) : 0;
    if (failure.exception == Acknowledge) {
        failure.kind = FailureKind::Acknowledged;
        failure.detail = QStringLiteral("the read");
    }
    return failure;
}

Failure connectionFailure(int code, const QString& why)
{
    Failure failure(FailureKind::NotConnected, why);
    failure.code = code;
    return failure;
}

} // namespace plc
