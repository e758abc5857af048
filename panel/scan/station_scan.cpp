// SPDX-License-Identifier: MIT
#include "panel/scan/station_scan.h"

#include "runtime/cycle/exchange_record.h"
#include "runtime/link/silence.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/exception_words.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/reply_fault.h"

#include <algorithm>
#include <chrono>

namespace plc
{

namespace
{

bool answeredLate(const LinkExchange& exchange)
{
    const int station = dialectOf(exchange.format).stationOf(exchange.sentFrame);
    return std::any_of(
        exchange.dropped.begin(), exchange.dropped.end(), [station](const DroppedReply& dropped) {
            return dropped.reason == DropReason::Late && byteAt(dropped.reply, unitOffset) == station;
        });
}

/// \return what came in place of the reply, in the words of a scan
QString silenceWords(const LinkExchange& exchange, int timeoutMs)
{
    const Failure failure = silenceFailure(PLC_LOCAL_NO_REPLY + 1, exchange, timeoutMs);
    const QString words = QStringLiteral("no answer within %1 ms").arg(timeoutMs);
    switch (failure.kind) {
    case FailureKind::NoReply:
        return words;
    case FailureKind::OtherUnit:
        return words + QStringLiteral("; unit %1 answered in its place").arg(failure.seen);
    case FailureKind::LateReply:
        return words + QStringLiteral("; %1 later: try a longer --timeout")
                           .arg(QLatin1String(answeredLate(exchange) ? "it answered" : "others answered"));
    default:
        return failureWords(failure);
    }
}

QString exceptionText(int exception)
{
    return QStringLiteral("exception %1, %2").arg(exception).arg(exceptionWords(exception));
}

bool mayBeTriedAgain(const StationAnswer& answer)
{
    return answer.kind == StationAnswer::None || answer.kind == StationAnswer::NotConnected;
}

} // namespace

bool isThere(const StationAnswer& answer)
{
    return answer.kind == StationAnswer::Values || answer.kind == StationAnswer::Refused ||
           answer.kind == StationAnswer::Unusable;
}

StationScan::StationScan(const Settings& settings, int tries, Listeners listeners)
    : m_settings(settings), m_tries(tries), m_listeners(std::move(listeners))
{
    connectAnew();
}

StationScan::~StationScan()
{
    m_link->close();
}

/// The pauses between connections are for a controller that is asked again and again. A scan asks each station once,
/// and a gateway may close the connection for each that it does not know.
void StationScan::connectAnew()
{
    auto link = std::make_unique<Link>(m_settings.host, m_settings.port, m_settings.timeoutMs,
                                       frameFormatOf(m_settings));
    link->setTap(m_listeners.bytes);
    const std::lock_guard<std::mutex> lock(m_linkMutex);
    if (m_link)
        m_link->close();
    m_link = std::move(link);
    if (m_isStopped)
        m_link->stop();
}

void StationScan::stop()
{
    m_isStopped = true;
    const std::lock_guard<std::mutex> lock(m_linkMutex);
    m_link->stop();
}

StationAnswer StationScan::ask(const DriverBlock& read)
{
    StationAnswer answer;
    answer.station = read.request.station;
    do {
        tryToRead(read, &answer);
    } while (!m_isStopped && mayBeTriedAgain(answer) && answer.tries < m_tries);
    if (m_isStopped && !isThere(answer)) {
        answer.kind = StationAnswer::NotAsked;
        answer.words = QStringLiteral("the scan was ended before");
    }
    const bool mayAskFurther = isThere(answer) && frameFormatOf(m_settings) == FrameFormat::ModbusTcp;
    if (mayAskFurther)
        answer.identity = askIdentity(
            answer.station, [&](const QByteArray& frame) { return askForIdentity(answer.station, frame); });
    return answer;
}

void StationScan::tryToRead(const DriverBlock& read, StationAnswer* answer)
{
    ++answer->tries;
    judge(read, exchange(read), answer);
}

void StationScan::judge(const DriverBlock& read, const LinkExchange& exchange, StationAnswer* answer) const
{
    const QByteArray& reply = exchange.reply;
    answer->microseconds = exchange.replyMicroseconds;
    const FailureKind fault = dialectOf(exchange.format).faultOf(exchange.sentFrame, reply);
    if (!exchange.sent) {
        answer->kind = StationAnswer::NotConnected;
        answer->words = noConnectionWords(m_settings.host, m_settings.port, m_lastError);
    } else if (reply.isEmpty()) {
        answer->kind = StationAnswer::None;
        answer->words = silenceWords(exchange, m_settings.timeoutMs);
    } else if (fault == FailureKind::Exception) {
        answer->exception = exceptionCode(reply);
        answer->words = exceptionText(answer->exception);
        answer->kind = isFromGateway(answer->exception) ? StationAnswer::Gateway : StationAnswer::Refused;
    } else if (fault != FailureKind::None || reply.size() != read.replyLength) {
        answer->kind = StationAnswer::Unusable;
        answer->words = fault != FailureKind::None ? replyFaultWords(fault)
                                                   : QStringLiteral("its reply has the wrong length");
    } else {
        answer->kind = StationAnswer::Values;
    }
}

LinkExchange StationScan::exchange(const DriverBlock& request)
{
    pause();
    LinkExchange exchange = m_link->exchange(request.frame, true, request.replyLength);
    const LinkState state = m_link->state();
    m_wasConnected = m_wasConnected || state.connects > 0;
    m_lastError = state.lastError;
    observe(request, exchange);
    if (exchange.closed || !exchange.sent)
        connectAnew();
    return exchange;
}

/// As the runtime tells it of its own exchanges.
void StationScan::observe(const DriverBlock& request, const LinkExchange& exchange) const
{
    if (!m_listeners.exchanges)
        return;
    ExchangeRecord record;
    record.durationMs = static_cast<int>(exchange.durationMs);
    record.frame = request.frame;
    record.exchange = exchange;
    record.request = request.request;
    record.result = exchange.reply.isEmpty() ? PLC_RETRYING : PLC_DONE;
    m_listeners.exchanges(record);
}

QByteArray StationScan::askForIdentity(int station, const QByteArray& frame)
{
    if (m_isStopped)
        return QByteArray();
    DriverBlock request = {};
    request.request.station = station;
    request.frame = frame;
    return exchange(request).reply;
}

void StationScan::pause() const
{
    const int sliceMs = 20;
    for (int left = m_settings.gapMs; left > 0 && !m_isStopped; left -= sliceMs)
        systemTime().sleep(std::min(left, sliceMs));
}

} // namespace plc
