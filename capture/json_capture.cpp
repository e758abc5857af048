// SPDX-License-Identifier: MIT
#include "capture/json_capture.h"

#include "capture/json_capture_keys.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/frame_words.h"
#include "runtime/model/value_text.h"

namespace plc
{

namespace
{

const std::size_t mostRequestsKept = 16;

QJsonObject frameObject(QLatin1String direction, const QByteArray& bytes, const QString& words)
{
    return {{jsonkeys::direction, direction}, {jsonkeys::hex, hexText(bytes)}, {jsonkeys::words, words}};
}

QString endText(const LinkEnd& end)
{
    const bool hasColons = end.address.contains(QLatin1Char(':'));
    return (hasColons ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(end.address, QString::number(end.port));
}

QJsonObject headerOf(const Settings& settings)
{
    return {{jsonkeys::capture, jsonwords::capturedBy},
            {jsonkeys::version, jsonCaptureVersion},
            {jsonkeys::controller, endText({settings.host, settings.port})},
            {jsonkeys::remote, settings.remoteMode},
            {jsonkeys::station, settings.station},
            {jsonkeys::multiStation, settings.multiStation},
            {jsonkeys::timeoutMs, settings.timeoutMs},
            {jsonkeys::retries, settings.retryLimit},
            {jsonkeys::maxBlock, settings.maxBlockCount}};
}

} // namespace

JsonCapture::JsonCapture(std::unique_ptr<CaptureFile> file, const Settings& settings, CaptureClock clock)
    : m_file(std::move(file)), m_dialect(dialectOf(frameFormatOf(settings))), m_clock(std::move(clock))
{
    line(headerOf(settings));
}

JsonCapture::~JsonCapture()
{
    rest();
}

void JsonCapture::line(QJsonObject object)
{
    object.insert(jsonkeys::time, captureTimeText(m_clock()));
    m_file->write(jsonLine(object).toUtf8() + '\n');
}

void JsonCapture::event(QLatin1String what, QJsonObject object)
{
    object.insert(jsonkeys::event, what);
    line(object);
}

void JsonCapture::opened(const LinkEnd& panel, const LinkEnd& controller)
{
    m_assembler.reset();
    m_requests.clear();
    event(jsonwords::connected,
          {{jsonkeys::panel, endText(panel)}, {jsonkeys::controller, endText(controller)}});
}

void JsonCapture::closed(const QString& why)
{
    rest();
    event(jsonwords::closed, {{jsonkeys::why, why}});
}

void JsonCapture::sent(const QByteArray& frame)
{
    m_lastRequest = frame;
    if (m_requests.size() >= mostRequestsKept)
        m_requests.clear();
    m_requests[wordAt(frame, numberOffset)] = frame;
    line(frameObject(jsonwords::request, frame, requestMeaning(frame)));
}

QString JsonCapture::requestMeaning(const QByteArray& frame) const
{
    return m_dialect.requestWords(frame);
}

void JsonCapture::notSent(const QByteArray& frame, const QString& why)
{
    event(jsonwords::notSent,
          {{jsonkeys::hex, hexText(frame)}, {jsonkeys::words, requestMeaning(frame)}, {jsonkeys::why, why}});
}

void JsonCapture::received(const QByteArray& bytes)
{
    m_assembler.append(bytes);
    m_rest += bytes;
    for (QByteArray whole = m_assembler.next(); !whole.isEmpty(); whole = m_assembler.next())
        reply(whole);
    if (m_assembler.outOfStep())
        rest();
}

void JsonCapture::reply(const QByteArray& bytes)
{
    m_rest.remove(0, bytes.size());
    line(frameObject(jsonwords::reply, bytes, replyMeaning(bytes)));
}

/// A late reply is explained by the request that it answers, if that is known.
QString JsonCapture::replyMeaning(const QByteArray& bytes) const
{
    if (!m_dialect.hasNumbers())
        return m_dialect.replyWords(m_lastRequest, bytes);
    const auto asked = m_requests.find(wordAt(bytes, numberOffset));
    if (asked == m_requests.end())
        return QStringLiteral("answers no request of this connection");
    const QString words = m_dialect.replyWords(asked->second, bytes);
    return asked->second == m_lastRequest ? words : QStringLiteral("to an earlier request: ") + words;
}

void JsonCapture::rest()
{
    if (m_rest.isEmpty())
        return;
    QJsonObject object = frameObject(jsonwords::reply, m_rest, QStringLiteral("no whole reply"));
    object.insert(jsonkeys::whole, false);
    line(object);
    m_rest.clear();
}

void JsonCapture::timedOut()
{
    event(jsonwords::noReplyInTime);
}

} // namespace plc
