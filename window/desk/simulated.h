// SPDX-License-Identifier: MIT
/// \file
/// \brief A simulated machine in the window itself, for whoever has no controller at hand.
#ifndef WINDOW_DESK_SIMULATED_H
#define WINDOW_DESK_SIMULATED_H

#include "window/session/source.h"

#include <memory>

namespace simulator
{
class SimulatedController;
}

namespace plc
{

/// \return a bottle filler on loopback with values that move
/// \throws std::runtime_error when no port can be opened
std::shared_ptr<simulator::SimulatedController> startSimulatedMachine();

/// \return its variables
std::vector<ListedVariable> simulatedVariables();

} // namespace plc

#endif
