// SPDX-License-Identifier: MIT
/// \file
/// \brief Programs of others that tests exchange values with. They are no part of the build, so one may be missing.
#ifndef TESTS_PANEL_PEERS_PEER_PROGRAMS_H
#define TESTS_PANEL_PEERS_PEER_PROGRAMS_H

#include <QString>
#include <QStringList>

#include <string>

namespace test
{

/// How a program ended and what it printed, errors included.
struct PeerRun {
    int status = -1; ///< -1 when it could not be started or did not end
    std::string text;
};

/// Runs \a program to its end.
PeerRun runPeer(const QString& program, const QStringList& arguments);

/// \return the path of mbpoll; empty where it is not installed
QString mbpollProgram();

/// \return the path of the system's python3, if it has pymodbus; else empty
QString pythonWithPymodbus();

} // namespace test

#endif
