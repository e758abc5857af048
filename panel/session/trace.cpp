// SPDX-License-Identifier: MIT
#include "panel/session/trace.h"

#include "panel/session/received_reply.h"
#include "panel/terminal/output.h"
#include "runtime/cycle/exchange_record.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/frame_words.h"
#include "runtime/modbus/return_code_words.h"
#include "runtime/modbus/return_codes.h"

namespace plc
{

namespace
{

QString line(const QString& begin, const QByteArray& bytes, const QString& meaning)
{
    return begin + hexText(bytes) + QStringLiteral("  ") + meaning + QLatin1Char('\n');
}

QString meaningOfRequest(const ExchangeRecord& record)
{
    return dialectOf(record.exchange.format).requestWords(record.frame);
}

QString frameLine(const ExchangeRecord& record, const QDateTime& begunAt)
{
    const QString time = begunAt.toString(QStringLiteral("HH:mm:ss.zzz"));
    if (!record.exchange.sent)
        return line(time + QStringLiteral(" -- "), record.frame,
                    meaningOfRequest(record) + QStringLiteral(" (not sent: no connection)"));
    return line(time + QStringLiteral(" -> "), record.exchange.sentFrame, meaningOfRequest(record));
}

QString replyMeaning(const ExchangeRecord& record)
{
    if (!record.replyExpected)
        return QStringLiteral("no reply is expected");
    return dialectOf(record.exchange.format).replyWords(record.frame, record.exchange.reply);
}

/// \return what the driver made of it, after how long
QString judgement(const ExchangeRecord& record)
{
    QString words = resultWords(record.result);
    if (!isSuccess(record.result) && record.result != PLC_RETRYING)
        words = QStringLiteral("given up with return code %1, %2").arg(record.result).arg(words);
    return QStringLiteral(" (%1 ms: %2)").arg(record.durationMs).arg(words);
}

QString replyLine(const ExchangeRecord& record)
{
    const QString begin = QStringLiteral("             <- ");
    const QString end = replyMeaning(record) + judgement(record);
    if (record.exchange.reply.isEmpty())
        return begin + end + QLatin1Char('\n');
    return line(begin, replyAsReceived(record.exchange), end);
}

} // namespace

QString traceText(const ExchangeRecord& record, const QDateTime& endedAt)
{
    QString text = frameLine(record, endedAt.addMSecs(-record.durationMs));
    for (const DroppedReply& dropped : record.exchange.dropped)
        text += line(QStringLiteral("             <- "), dropped.reply,
                     QStringLiteral("dropped: %1").arg(dropReasonWords(dropped.reason)));
    return text + replyLine(record);
}

ExchangeObserver traceToStandardError()
{
    return
        [](const ExchangeRecord& record) { printError(traceText(record, QDateTime::currentDateTimeUtc())); };
}

} // namespace plc
