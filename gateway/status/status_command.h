// SPDX-License-Identifier: MIT
/// \file
/// \brief plcgateway --status: how running gateways are, for people and scripts.
#ifndef GATEWAY_STATUS_STATUS_COMMAND_H
#define GATEWAY_STATUS_STATUS_COMMAND_H

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace plc
{

/// Where the folders of the gateways are that systemd started, each called like its instance.
inline constexpr char statusRoot[] = "/run/plcgateway";

struct StatusReport {
    QString text;       ///< of those that answered
    QStringList errors; ///< of those that did not
};

/// \param who names of instances below \a root, and folders, which have a slash; none: all of \a root
/// \param isJson one object a line, with the member "name"
StatusReport statusOf(const QStringList& who, bool isJson, const QString& root = QLatin1String(statusRoot));

/// \return the figures as lines "what: value", in the order that people look for them
QString statusText(const QJsonObject& status);

} // namespace plc

#endif
