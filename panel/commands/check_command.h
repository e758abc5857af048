// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel check: which variables of a list the controller refuses, before going live.
#ifndef PANEL_COMMANDS_CHECK_COMMAND_H
#define PANEL_COMMANDS_CHECK_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Reads each block that the driver makes of the variables once, and prints what was refused.
ExitStatus runCheck(const Options& options);

} // namespace plc

#endif
