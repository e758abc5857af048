// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel demo: everything at work against a simulated controller of its own.
#ifndef PANEL_COMMANDS_DEMO_COMMAND_H
#define PANEL_COMMANDS_DEMO_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Prints each step as it is done and a summary at the end. Fails when one value is not what it must be.
/// \throws std::runtime_error when the driver cannot be loaded or no port can be opened
ExitStatus runDemo(const Options& options);

} // namespace plc

#endif
