// SPDX-License-Identifier: MIT
/// \file
/// \brief One panel and its simulated controller, for the time of a soak run.
#ifndef SOAK_PAIR_H
#define SOAK_PAIR_H

#include "soak/figures.h"
#include "soak/options.h"

namespace soak
{

/// Runs until the controller has received its share of the requests, then without faults until everything is
/// right again. Needs an application object, and a process of its own: the driver's state is one per process.
/// Every second pair serves several stations.
///
/// \param number of the pair, from 0
/// \param figures filled while it runs
/// \throws std::runtime_error when it cannot start
void runPair(const Options& options, int number, Figures& figures);

} // namespace soak

#endif
