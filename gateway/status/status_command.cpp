// SPDX-License-Identifier: MIT
#include "gateway/status/status_command.h"

#include "gateway/status/status_socket.h"
#include "runtime/model/printable.h"

#include <QDateTime>
#include <QDir>
#include <QJsonDocument>

namespace plc
{

namespace
{

enum class Form {
    Plain,
    Time,    ///< ms since 1970 UTC, or -1
    Duration ///< ms, or -1
};

struct LineRow {
    const char* key;
    const char* words;
    Form form;
};

// In the order in which they are shown. What has no row is shown behind them, under its key.
const LineRow lineRows[] = {
    {"controller", "controller", Form::Plain},
    {"controllerState", "controller is", Form::Plain},
    {"lastReplyAt", "last good reply", Form::Time},
    {"roundTripMs", "reply takes (ms)", Form::Plain},
    {"refreshesPerSecond", "refreshes a second", Form::Plain},
    {"requests", "requests", Form::Plain},
    {"retries", "retries", Form::Plain},
    {"failures", "requests given up", Form::Plain},
    {"broker", "broker", Form::Plain},
    {"brokerState", "broker is", Form::Plain},
    {"brokerConnections", "connections to it", Form::Plain},
    {"published", "messages published", Form::Plain},
    {"waiting", "values that wait", Form::Plain},
    {"oldestMs", "oldest has waited", Form::Duration},
    {"dropped", "values dropped", Form::Plain},
    {"spoolBytes", "bytes of the spool", Form::Plain},
    {"spoolProblem", "spool's problem", Form::Plain},
    {"startedAt", "runs since", Form::Time},
    {"at", "told at", Form::Time},
};

/// Counts are whole; of measures four digits are enough.
QString numberText(double number)
{
    const bool isWhole = number == static_cast<double>(static_cast<qint64>(number));
    return isWhole ? QString::number(static_cast<qint64>(number)) : QString::number(number, 'g', 4);
}

QString plainText(const QJsonValue& value)
{
    if (value.isBool())
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    if (value.isDouble())
        return numberText(value.toDouble());
    return printable(value.toString());
}

QString formed(const QJsonValue& value, Form form)
{
    if (form == Form::Plain || !value.isDouble())
        return plainText(value);
    const auto ms = static_cast<qint64>(value.toDouble());
    if (ms < 0)
        return QStringLiteral("-");
    if (form == Form::Duration)
        return QStringLiteral("%1 s").arg(static_cast<double>(ms) / 1000, 0, 'f', 1);
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs);
}

QString line(const QString& words, const QString& value)
{
    return QStringLiteral("  %1  %2\n").arg(words, -20).arg(value);
}

QStringList instancesOf(const QString& root)
{
    QStringList found;
    for (const QString& name : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (QFile::exists(statusSocket(QDir(root).filePath(name))))
            found << name;
    }
    return found;
}

QString nameOf(const QString& who)
{
    return who.contains(QLatin1Char('/')) ? QDir(QDir::cleanPath(who)).dirName() : who;
}

} // namespace

QString statusText(const QJsonObject& status)
{
    QString text;
    QJsonObject others = status;
    others.remove(QStringLiteral("name"));
    for (const LineRow& row : lineRows) {
        const QJsonValue value = others.take(QLatin1String(row.key));
        const bool isSaid = !value.isUndefined() && value != QJsonValue(QString());
        if (isSaid)
            text += line(QLatin1String(row.words), formed(value, row.form));
    }
    for (auto other = others.begin(); other != others.end(); ++other)
        text += line(printable(other.key()), plainText(other.value()));
    return text;
}

StatusReport statusOf(const QStringList& who, bool isJson, const QString& root)
{
    StatusReport report;
    const QStringList asked = who.isEmpty() ? instancesOf(root) : who;
    if (asked.isEmpty())
        report.errors << QStringLiteral(
                             "no gateway is running in %1; name the folder of one that was started "
                             "otherwise, that of its --state")
                             .arg(root);
    for (const QString& each : asked) {
        const bool isFolder = each.contains(QLatin1Char('/'));
        StatusAnswer answer = askStatus(isFolder ? each : QDir(root).filePath(each));
        if (!answer.error.isEmpty()) {
            report.errors << answer.error;
            continue;
        }
        const QString name = nameOf(each);
        answer.status.insert(QStringLiteral("name"), name);
        report.text +=
            isJson ? QString::fromUtf8(QJsonDocument(answer.status).toJson(QJsonDocument::Compact) + '\n')
                   : printable(name) + QLatin1Char('\n') + statusText(answer.status);
    }
    return report;
}

} // namespace plc
