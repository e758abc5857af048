#include "capture/json_capture_reader.h"

#include "capture/capture_clock.h"
#include "runtime/model/printable.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <stdexcept>

namespace plc
{

namespace
{

const int readableVersion = 1;
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

QString textIn(const QJsonObject& object, const char* member)
{
    const QJsonValue value = object.value(QLatin1String(member));
    if (!value.isString())
        throw BadLine(QStringLiteral("\"%1\" is missing or no text").arg(QLatin1String(member)));
    return value.toString();
}

int numberIn(const QJsonObject& object, const char* member, int otherwise)
{
    const QJsonValue value = object.value(QLatin1String(member));
    return value.isUndefined() ? otherwise : value.toInt(otherwise);
}

Settings settingsIn(const QJsonObject& header)
{
    Settings settings;
    settings.remoteMode = header.value(QLatin1String("remote")).toBool();
    settings.multiStation = header.value(QLatin1String("multiStation")).toBool();
    settings.station = numberIn(header, "station", settings.station);
    settings.timeoutMs = numberIn(header, "timeoutMs", settings.timeoutMs);
    settings.retryLimit = numberIn(header, "retries", settings.retryLimit);
    settings.maxBlockCount = numberIn(header, "maxBlock", settings.maxBlockCount);
    Settings complete = settings; // what a capture does not say must not count against it
    complete.driverPath = QStringLiteral("any");
    const QString words = settingsError(complete);
    if (!words.isEmpty())
        throw BadLine(words);
    return settings;
}

Settings headerIn(const QJsonObject& object)
{
    if (object.value(QLatin1String("capture")).toString() != QLatin1String("plcpanel"))
        throw BadLine(
            QStringLiteral("this is no capture of plcpanel: its first line has \"capture\":\"plcpanel\""));
    const int version = numberIn(object, "version", 0);
    if (version != readableVersion)
        throw BadLine(QStringLiteral("the capture has version %1; this program reads version %2")
                          .arg(version)
                          .arg(readableVersion));
    return settingsIn(object);
}

qint64 timeIn(const QJsonObject& object)
{
    const QString text = textIn(object, "time");
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
    for (const char character : textIn(object, "hex").toUtf8()) {
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
    if (event == QLatin1String("connected"))
        return CaptureEntry::Opened;
    if (event == QLatin1String("closed"))
        return CaptureEntry::Closed;
    if (event == QLatin1String("not sent"))
        return CaptureEntry::NotSent;
    if (event == QLatin1String("no reply in time"))
        return CaptureEntry::TimedOut;
    return std::nullopt;
}

CaptureEntry::Kind kindOfDirection(const QString& direction)
{
    if (direction == QLatin1String("request"))
        return CaptureEntry::Request;
    if (direction == QLatin1String("reply"))
        return CaptureEntry::Reply;
    throw BadLine(QStringLiteral("\"%1\" is no direction; request or reply is expected").arg(direction));
}

/// \return nothing for what is of no use to a replay
std::optional<CaptureEntry> entryIn(const QJsonObject& object)
{
    CaptureEntry entry;
    entry.microseconds = timeIn(object);
    if (object.contains(QLatin1String("event"))) {
        const auto kind = kindOfEvent(textIn(object, "event"));
        if (kind)
            entry.kind = *kind;
        if (kind == CaptureEntry::NotSent) {
            entry.bytes = bytesIn(object);
            entry.why = textIn(object, "why");
        }
        return kind ? std::make_optional(entry) : std::nullopt;
    }
    entry.kind = kindOfDirection(textIn(object, "direction"));
    entry.bytes = bytesIn(object);
    if (!object.value(QLatin1String("whole")).toBool(true))
        return std::nullopt;
    return entry;
}

/// Goes through the lines until one is wrong or the sink wants no more.
class JsonCaptureReader
{
public:
    JsonCaptureReader(const QByteArray& text, const CaptureSink& sink) : m_text(text), m_sink(sink) {}

    CaptureEnd read()
    {
        while (m_goOn && m_position < m_text.size()) {
            const int end = m_text.indexOf('\n', m_position);
            const bool isCut = end < 0;
            const int size = (isCut ? m_text.size() : end) - m_position;
            const QByteArray line = QByteArray::fromRawData(m_text.constData() + m_position, size).trimmed();
            m_position += isCut ? size : size + 1;
            ++m_number;
            tryLine(line, isCut);
        }
        if (m_goOn && !m_end.settings)
            m_end.error = QStringLiteral("it holds no capture: there is no line in it");
        return m_end;
    }

private:
    void tryLine(const QByteArray& line, bool isCut)
    {
        try {
            takeLine(line);
        } catch (const BadLine& bad) {
            m_goOn = false;
            const QString words = QString::fromStdString(bad.what());
            if (isCut && m_end.settings)
                m_end.notes << QStringLiteral("its last line, %1, was cut and is left out").arg(m_number);
            else
                m_end.error =
                    QStringLiteral("line %1: %2: %3").arg(m_number).arg(printable(words), shown(line));
        }
    }

    void takeLine(const QByteArray& line)
    {
        if (line.isEmpty())
            return;
        if (line.size() > longestJsonLine)
            throw BadLine(QStringLiteral("it is longer than %1 bytes").arg(longestJsonLine));
        const QJsonObject object = objectOf(line);
        if (!m_end.settings) {
            m_end.settings = headerIn(object);
            return;
        }
        auto entry = entryIn(object);
        if (!entry)
            return;
        entry->position = m_position;
        m_goOn = m_sink(*entry);
    }

    static QString shown(const QByteArray& line)
    {
        const QString text = printable(QString::fromUtf8(line.left(shownOfLine)));
        return line.size() > shownOfLine ? text + QStringLiteral("...") : text;
    }

    const QByteArray& m_text;
    const CaptureSink& m_sink;
    CaptureEnd m_end;
    int m_position = 0;
    int m_number = 0;
    bool m_goOn = true;
};

} // namespace

CaptureEnd parseJsonCapture(const QByteArray& text, const CaptureSink& sink)
{
    return JsonCaptureReader(text, sink).read();
}

} // namespace plc
