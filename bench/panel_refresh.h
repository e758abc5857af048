// SPDX-License-Identifier: MIT
/// \file
/// \brief The panel's communication loop refreshing a list, and what a request costs it.
#ifndef BENCH_PANEL_REFRESH_H
#define BENCH_PANEL_REFRESH_H

#include "runtime/cycle/runtime.h"

#include <functional>
#include <vector>

namespace bench
{

using Variables = std::vector<plc::Variable>;

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

/// \name Processor time of a request in microseconds, when a part of the loop runs alone
/// @{

/// The driver: ComCommunication() and DataCom() with the replies of \a pass.
double driverMicroseconds(const Variables& variables, const Pass& pass, int milliseconds);

/// The link: sending and matching the frames of \a pass.
double linkMicroseconds(int port, const Pass& pass, int milliseconds);

/// For comparison: any way to send \a requests and receive their replies.
double microsecondsPerRequest(int requests, int milliseconds, const std::function<void()>& sendAll);
/// @}

} // namespace bench

#endif
