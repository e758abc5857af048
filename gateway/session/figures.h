// SPDX-License-Identifier: MIT
/// \file
/// \brief How the gateway is, in figures.
#ifndef GATEWAY_SESSION_FIGURES_H
#define GATEWAY_SESSION_FIGURES_H

#include <QString>

#include <vector>

namespace plc
{

/// Since the start, where nothing else is said.
struct GatewayFigures {
    bool controllerConnected = false;
    QString controllerError; ///< why there is no connection
    double refreshesPerSecond = 0;
    long requests = 0; ///< frames that went to the controller
    long retries = 0;
    long failures = 0;       ///< requests given up
    double roundTripMs = 0;  ///< of the controller's replies, on average
    qint64 lastReplyAt = -1; ///< when the controller's last good reply came, in ms since 1970 UTC; -1: never
    bool brokerConnected = false;
    QString brokerError;        ///< why there is no connection
    long brokerConnections = 0; ///< one more with each connection that the broker took
    quint64 waiting = 0;        ///< values that the broker has not acknowledged
    quint64 dropped = 0;        ///< values that went because there were too many, or they were too old
    qint64 oldestMs = -1;       ///< how long the oldest of them has waited; -1 when none waits
    qint64 spoolBytes = 0;      ///< that the waiting values take on disk
    QString spoolProblem;       ///< why they cannot be kept there
    long published = 0;         ///< values that were handed to the connection, those sent again included
};

struct FigureRow {
    const char* key;  ///< json
    const char* name; ///< sparkplug
    double (*value)(const GatewayFigures& figures);
};

/// \return every figure that is a number, a row each, in the order in which they are shown
const std::vector<FigureRow>& figureRows();

} // namespace plc

#endif
