// SPDX-License-Identifier: MIT
/// \file
/// \brief The panel's communication loop refreshing a list, and what a request costs it.
#ifndef BENCH_PANEL_REFRESH_H
#define BENCH_PANEL_REFRESH_H

#include "runtime/cycle/runtime.h"

#include <QString>

#include <functional>
#include <vector>

namespace bench
{

using Variables = std::vector<plc::Variable>;

/// Sends all requests of a refresh and takes their replies.
using Refresh = std::function<void()>;

/// \throws std::runtime_error when the list has errors
Variables variablesOf(const QString& path);

/// All wait for a reply so long: on a busy machine even a simulated controller is
/// late.
const int patienceMs = 5000;

/// Loads the built driver, and does not pause between passes.
plc::Settings settingsFor(int port);

/// One pass as it went over the link.
struct Pass {
    std::vector<QByteArray> frames;  ///< as the driver built them, number 0
    std::vector<QByteArray> replies; ///< with number 0
    plc::PassCost cost;
};

/// \throws std::runtime_error when a request fails
Pass recordPass(int port, const Variables& variables);

struct LoopCost {
    qint64 shortestRefresh;        ///< nanoseconds
    double microsecondsPerRequest; ///< processor time of the communication thread, the system's included
};

/// Runs the panel's loop for about \a milliseconds.
/// \param requests requests of a refresh
LoopCost runLoop(int port, const Variables& variables, int requests, int milliseconds);

/// Runs the panel's loop until it has gone through the variables so often.
void runLoopPasses(int port, const Variables& variables, int requests, int passes);

/// \name A part of the loop alone
/// Each makes ready, hands \a load what refreshes the list once, and cleans up.
/// @{

/// The driver: ComCommunication() and DataCom() with the replies of \a pass.
void withDriver(const Variables& variables, const Pass& pass,
                const std::function<void(const Refresh&)>& load);

/// The link: sending and matching the frames of \a pass.
void withLink(int port, const Pass& pass, const std::function<void(const Refresh&)>& load);
/// @}

/// \return processor time of one of the \a requests of a refresh, in microseconds
double microsecondsPerRequest(int requests, int milliseconds, const Refresh& refresh);

} // namespace bench

#endif
