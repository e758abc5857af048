// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/host_state.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace plc
{

HostState::News HostState::take(const QByteArray& payload)
{
    const QJsonObject object = QJsonDocument::fromJson(payload).object();
    const QJsonValue online = object.value(QStringLiteral("online"));
    const QJsonValue timestamp = object.value(QStringLiteral("timestamp"));
    if (!online.isBool() || !timestamp.isDouble())
        return None;
    const double time = timestamp.toDouble();
    // A birth repeats the time of the will before it, so the same time is no older one.
    const std::optional<double> before = online.toBool() ? m_last : m_lastOnline;
    if (before && time < *before)
        return None;
    m_last = time;
    if (online.toBool())
        m_lastOnline = time;
    return online.toBool() ? Online : Offline;
}

} // namespace plc
