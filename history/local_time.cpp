// SPDX-License-Identifier: MIT
#include "history/local_time.h"

#include <QDateTime>
#include <QRegularExpression>

namespace plc
{

namespace
{

qint64 msOfUnit(QChar unit)
{
    const qint64 second = 1000;
    switch (unit.toLatin1()) {
    case 's':
        return second;
    case 'm':
        return 60 * second;
    case 'h':
        return 3600 * second;
    default:
        return 86400 * second;
    }
}

std::optional<qint64> parseAgo(const QString& text, qint64 nowMs)
{
    static const QRegularExpression ago(QStringLiteral("^-([0-9]{1,9})([smhd])$"));
    const QRegularExpressionMatch match = ago.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return nowMs - match.captured(1).toLongLong() * msOfUnit(match.captured(2).at(0));
}

} // namespace

QString localTimeText(qint64 timeMs)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(timeMs);
    QString text = time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
    if (text.endsWith(QLatin1Char('Z'))) // all of one length, so that they stand below each other
        text.replace(text.size() - 1, 1, QStringLiteral("+00:00"));
    return text;
}

std::optional<qint64> parseLocalTime(const QString& text, qint64 nowMs)
{
    const QDate today = QDateTime::fromMSecsSinceEpoch(nowMs).date();
    if (text == QLatin1String("now"))
        return nowMs;
    if (text == QLatin1String("today"))
        return today.startOfDay().toMSecsSinceEpoch();
    if (text == QLatin1String("yesterday"))
        return today.addDays(-1).startOfDay().toMSecsSinceEpoch();
    if (const auto ago = parseAgo(text, nowMs))
        return ago;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!time.isValid())
        return std::nullopt;
    return time.toMSecsSinceEpoch();
}

QString localTimeWords()
{
    return QStringLiteral("a time like 2026-11-22T14:03:22, a date, now, today, yesterday, or how long ago: "
                          "-90s, -15m, -1h, -7d");
}

} // namespace plc
