#include "panel/check/read_answer.h"

#include "runtime/cycle/exchange_record.h"
#include "runtime/cycle/runtime.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/return_code_words.h"

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

ReadAnswer answerOf(const ExchangeRecord& record, const QString& failure)
{
    if (!record.exchange.sent)
        return {ReadAnswer::NotConnected, failure};
    const int exception = exceptionCode(record.exchange.reply);
    if (exception == 0 || !isAboutTheRequest(exception))
        return {ReadAnswer::Unanswered, failure};
    return {ReadAnswer::Refused,
            QStringLiteral("exception %1, %2").arg(exception).arg(exceptionWords(exception))};
}

} // namespace plc
