// SPDX-License-Identifier: MIT
#include "gateway/service/service_report.h"

#include "runtime/model/clock.h"
#include "runtime/model/counted.h"

#include <QDateTime>
#include <QJsonObject>

namespace plc
{

namespace
{

const qint64 tellPeriodMs = 1000;

// Beside what the settings let a request take: the system may be busy.
const qint64 slackMs = 10000;

qint64 steadyNow()
{
    return msSince(Clock::time_point());
}

qint64 longestRound(const Settings& controller)
{
    return qint64(2) * controller.timeoutMs + controller.gapMs + slackMs; // a connection first, then a reply
}

QString endpoint(const QString& host, int port)
{
    return QStringLiteral("%1:%2").arg(host).arg(port);
}

QString controllerState(const GatewayFigures& figures)
{
    if (figures.controllerConnected)
        return QStringLiteral("connected");
    return figures.controllerError.isEmpty() ? QStringLiteral("not connected")
                                             : QStringLiteral("not connected: ") + figures.controllerError;
}

QString brokerState(const GatewayFigures& figures)
{
    if (figures.brokerConnected)
        return QStringLiteral("connected");
    return figures.brokerError.isEmpty() ? QStringLiteral("not connected")
                                         : QStringLiteral("not connected: ") + figures.brokerError;
}

} // namespace

ServiceReport::ServiceReport(const GatewayOptions& options)
    : m_options(options), m_watchdog(&m_manager, longestRound(options.controller)),
      m_startedAt(QDateTime::currentMSecsSinceEpoch())
{
}

QString ServiceReport::open()
{
    const QString folder = QString::fromLocal8Bit(qgetenv("RUNTIME_DIRECTORY"));
    return m_status.open(folder.isEmpty() ? m_options.stateDirectory : folder);
}

void ServiceReport::look(quint32 rounds)
{
    m_watchdog.look(rounds, steadyNow());
}

bool ServiceReport::isDue() const
{
    return m_toldMs < 0 || steadyNow() - m_toldMs >= tellPeriodMs;
}

void ServiceReport::tell(const GatewayFigures& figures)
{
    m_toldMs = steadyNow();
    m_manager.status(QStringLiteral("controller %1; broker %2; %3")
                         .arg(controllerState(figures), brokerState(figures))
                         .arg(counted(static_cast<qint64>(figures.waiting), "value waits", "values wait")));
    QJsonObject status;
    for (const FigureRow& row : figureRows())
        status.insert(QLatin1String(row.key), row.value(figures));
    const Settings& controller = m_options.controller;
    status.insert(QStringLiteral("controller"), endpoint(controller.host, controller.port));
    status.insert(QStringLiteral("controllerState"), controllerState(figures));
    status.insert(QStringLiteral("lastReplyAt"), static_cast<double>(figures.lastReplyAt));
    status.insert(QStringLiteral("broker"), endpoint(m_options.broker.host, brokerPort(m_options.broker)));
    status.insert(QStringLiteral("brokerState"), brokerState(figures));
    status.insert(QStringLiteral("spoolBytes"), static_cast<double>(figures.spoolBytes));
    status.insert(QStringLiteral("spoolProblem"), figures.spoolProblem);
    status.insert(QStringLiteral("startedAt"), static_cast<double>(m_startedAt));
    status.insert(QStringLiteral("at"), static_cast<double>(QDateTime::currentMSecsSinceEpoch()));
    m_status.show(status);
}

} // namespace plc
