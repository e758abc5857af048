// SPDX-License-Identifier: MIT
#include "capture/capture_clock.h"

#include <QDateTime>

#include <chrono>

namespace plc
{

namespace
{

const qint64 microsecondsOfSecond = 1000000;
const int digitsOfFraction = 6;
const int charactersBeforeFraction = 19; // 2026-11-21T14:03:22
const qint64 lastSecond = 0xFFFFFFFF;    // that a pcap file can say

std::optional<qint64> parseFraction(const QString& text)
{
    if (text.isEmpty())
        return 0;
    bool isNumber = false;
    const QString digits = text.mid(1).leftJustified(digitsOfFraction, QLatin1Char('0'));
    const uint number = digits.toUInt(&isNumber);
    if (text.size() == 1 || text.at(0) != QLatin1Char('.') || digits.size() != digitsOfFraction || !isNumber)
        return std::nullopt;
    return number;
}

} // namespace

qint64 captureTime()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

QString captureTimeText(qint64 microseconds)
{
    const QDateTime second = QDateTime::fromSecsSinceEpoch(microseconds / microsecondsOfSecond, Qt::UTC);
    return second.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")) +
           QStringLiteral(".%1Z").arg(microseconds % microsecondsOfSecond, digitsOfFraction, 10,
                                      QLatin1Char('0'));
}

std::optional<qint64> parseCaptureTime(const QString& text)
{
    if (text.size() <= charactersBeforeFraction || !text.endsWith(QLatin1Char('Z')))
        return std::nullopt;
    QDateTime second =
        QDateTime::fromString(text.left(charactersBeforeFraction), QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    second.setTimeSpec(Qt::UTC);
    const auto fraction = parseFraction(text.mid(charactersBeforeFraction).chopped(1));
    const qint64 seconds = second.isValid() ? second.toSecsSinceEpoch() : -1;
    if (!fraction || seconds < 0 || seconds > lastSecond)
        return std::nullopt;
    return seconds * microsecondsOfSecond + *fraction;
}

} // namespace plc
