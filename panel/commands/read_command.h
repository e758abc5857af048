// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel read: prints values.
#ifndef PANEL_COMMANDS_READ_COMMAND_H
#define PANEL_COMMANDS_READ_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Reads the variables one after the other; when the controller cannot be reached, the rest is not tried.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runRead(const Options& options);

} // namespace plc

#endif
