#include "runtime/modbus/failure_words.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/return_code_words.h"

namespace plc
{

QString failureWords(int code, const QByteArray& reply, int timeoutMs)
{
    if (reply.isEmpty())
        return QStringLiteral("%1 within %2 ms").arg(resultWords(code)).arg(timeoutMs);
    const int exception = exceptionCode(reply);
    if (exception != 0)
        return QStringLiteral("the controller refused it: exception %1, %2")
            .arg(exception)
            .arg(exceptionWords(exception));
    return resultWords(code);
}

QString noConnectionWords(const QString& host, int port, const QString& error)
{
    return QStringLiteral("no connection to %1:%2 (%3)").arg(host, QString::number(port), error);
}

} // namespace plc
