#include "runtime/modbus/reply_failure.h"

#include "runtime/modbus/frame_fields.h"

namespace plc
{

Failure replyFailure(int code, const QByteArray& reply, int timeoutMs)
{
    Failure failure;
    failure.code = code;
    if (reply.isEmpty()) {
        failure.kind = FailureKind::NoReply;
        failure.timeoutMs = timeoutMs;
        return failure;
    }
    failure.exception = exceptionCode(reply);
    failure.kind = failure.exception != 0 ? FailureKind::Exception : FailureKind::BadReply;
    return failure;
}

Failure connectionFailure(int code, const QString& why)
{
    Failure failure(FailureKind::NotConnected, why);
    failure.code = code;
    return failure;
}

} // namespace plc
