// SPDX-License-Identifier: MIT
#include "capture/json_capture_reader.h"

#include "capture/capture_clock.h"
#include "capture/json_capture_keys.h"
#include "runtime/model/printable.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <stdexcept>

namespace plc
{

namespace
{

const int longestJsonLine = 16 * 1024 * 1024; // a remote frame can have 65535 double words
const int shownOfLine = 60;

/// What is wrong with a line.
class BadLine : public std::runtime_error
{
public:
    explicit BadLine(const QString& words) : std::runtime_error(words.toStdString()) {}
};

QJsonObject objectOf(const QByteArray& line)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError)
        throw BadLine(
            QStringLiteral("it is no JSON: %1 at character %2").arg(error.errorString()).arg(error.offset));
    if (!document.isObject())
        throw BadLine(QStringLiteral("a JSON object is expected"));
    return document.object();
}

QString textIn(const QJsonObject& object, QLatin1String member)
{
    const QJsonValue value = object.value(member);
    if (!value.isString())
        throw BadLine(QStringLiteral("\"%1\" is missing or no text").arg(member));
    return value.toString();
}

int numberIn(const QJsonObject& object, QLatin1String member, int otherwise)
{
    const QJsonValue value = object.value(member);
    return value.isUndefined() ? otherwise : value.toInt(otherwise);
}

Settings settingsIn(const QJsonObject& header)
{
    Settings settings;
    settings.remoteMode = header.value(jsonkeys::remote).toBool();
    settings.multiStation = header.value(jsonkeys::multiStation).toBool();
    settings.station = numberIn(header, jsonkeys::station, settings.station);
    settings.timeoutMs = numberIn(header, jsonkeys::timeoutMs, settings.timeoutMs);
    settings.retryLimit = numberIn(header, jsonkeys::retries, settings.retryLimit);
    settings.maxBlockCount = numberIn(header, jsonkeys::maxBlock, settings.maxBlockCount);
    Settings complete = settings; // what a capture does not say must not count against it
    complete.driverPath = QStringLiteral("any");
    const QString words = settingsError(complete);
    if (!words.isEmpty())
        throw BadLine(words);
    return settings;
}

Settings headerIn(const QJsonObject& object)
{
    if (object.value(jsonkeys::capture).toString() != jsonwords::capturedBy)
        throw BadLine(
            QStringLiteral("this is no capture of plcpanel: its first line has \"capture\":\"plcpanel\""));
    const int version = numberIn(object, jsonkeys::version, 0);
    if (version != jsonCaptureVersion)
        throw BadLine(QStringLiteral("the capture has version %1; this program reads version %2")
                          .arg(version)
                          .arg(jsonCaptureVersion));
    return settingsIn(object);
}

qint64 timeIn(const QJsonObject& object)
{
    const QString text = textIn(object, jsonkeys::time);
    const auto time = parseCaptureTime(text);
    if (!time)
        throw BadLine(QStringLiteral("\"%1\" is no time such as 2026-11-21T14:03:22.123456Z").arg(text));
    return *time;
}

int digitOf(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Bytes of two digits each, with any spaces between.
QByteArray bytesIn(const QJsonObject& object)
{
    QByteArray bytes;
    int high = -1;
    for (const char character : textIn(object, jsonkeys::hex).toUtf8()) {
        const int digit = digitOf(character);
        if (character == ' ' && high < 0)
            continue;
        if (digit < 0)
            throw BadLine(
                QStringLiteral("\"hex\" holds something that is no byte in two hexadecimal digits"));
        if (high >= 0)
            bytes.append(static_cast<char>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    if (high >= 0 || bytes.isEmpty())
        throw BadLine(QStringLiteral("\"hex\" must hold bytes, two digits each"));
    return bytes;
}

std::optional<CaptureEntry::Kind> kindOfEvent(const QString& event)
{
    if (event == jsonwords::connected)
        return CaptureEntry::Opened;
    if (event == jsonwords::closed)
        return CaptureEntry::Closed;
    if (event == jsonwords::notSent)
        return CaptureEntry::NotSent;
    if (event == jsonwords::noReplyInTime)
        return CaptureEntry::TimedOut;
    return std::nullopt;
}

CaptureEntry::Kind kindOfDirection(const QString& direction)
{
    if (direction == jsonwords::request)
        return CaptureEntry::Request;
    if (direction == jsonwords::reply)
        return CaptureEntry::Reply;
    throw BadLine(QStringLiteral("\"%1\" is no direction; request or reply is expected").arg(direction));
}

/// \return nothing for what is of no use to a replay
std::optional<CaptureEntry> entryIn(const QJsonObject& object)
{
    CaptureEntry entry;
    entry.microseconds = timeIn(object);
    if (object.contains(jsonkeys::event)) {
        const auto kind = kindOfEvent(textIn(object, jsonkeys::event));
        if (kind)
            entry.kind = *kind;
        if (kind == CaptureEntry::NotSent) {
            entry.bytes = bytesIn(object);
            entry.why = textIn(object, jsonkeys::why);
        }
        return kind ? std::make_optional(entry) : std::nullopt;
    }
    entry.kind = kindOfDirection(textIn(object, jsonkeys::direction));
    entry.bytes = bytesIn(object);
    if (!object.value(jsonkeys::whole).toBool(true))
        return std::nullopt;
    return entry;
}

QString shown(const QByteArray& line)
{
    const QString text = printable(QString::fromUtf8(line.left(shownOfLine)));
    return line.size() > shownOfLine ? text + QStringLiteral("...") : text;
}

} // namespace

JsonCaptureReader::JsonCaptureReader(OpenFile file) : m_file(std::move(file))
{
    while (m_goOn && !m_end.settings && nextLine())
        tryLine({});
    if (m_goOn && !m_end.settings)
        m_end.error = QStringLiteral("it holds no capture: there is no line in it");
}

CaptureEnd JsonCaptureReader::read(const CaptureSink& sink)
{
    while (m_goOn && m_end.settings && nextLine())
        tryLine(sink);
    if (m_goOn && std::ferror(m_file.get()) != 0)
        m_end.error = QStringLiteral("line %1: cannot read on").arg(m_number + 1);
    return m_end;
}

/// A line that is too long is read as far as it takes to know that.
/// \return false at the end
bool JsonCaptureReader::nextLine()
{
    m_line.resize(0);
    int character = EOF;
    while (m_line.size() <= longestJsonLine && (character = getc_unlocked(m_file.get())) != EOF &&
           character != '\n')
        m_line.append(static_cast<char>(character));
    m_isCut = character == EOF;
    ++m_number;
    return !m_isCut || !m_line.isEmpty();
}

void JsonCaptureReader::tryLine(const CaptureSink& sink)
{
    try {
        takeLine(sink);
    } catch (const BadLine& bad) {
        m_goOn = false;
        const QString words = QString::fromStdString(bad.what());
        if (m_isCut && m_end.settings)
            m_end.notes << QStringLiteral("its last line, %1, was cut and is left out").arg(m_number);
        else
            m_end.error = QStringLiteral("line %1: %2: %3")
                              .arg(m_number)
                              .arg(printable(words), shown(m_line.trimmed()));
    }
}

void JsonCaptureReader::takeLine(const CaptureSink& sink)
{
    if (m_line.size() > longestJsonLine)
        throw BadLine(QStringLiteral("it is longer than %1 bytes").arg(longestJsonLine));
    const QByteArray line = m_line.trimmed();
    if (line.isEmpty())
        return;
    if (m_end.settings)
        takeEntry(line, sink);
    else
        m_end.settings = headerIn(objectOf(line));
}

void JsonCaptureReader::takeEntry(const QByteArray& line, const CaptureSink& sink)
{
    const auto entry = entryIn(objectOf(line));
    if (entry)
        m_goOn = sink(*entry);
}

} // namespace plc
