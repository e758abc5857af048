// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel log: writes what variables show to a file until Ctrl-C.
#ifndef PANEL_COMMANDS_LOG_COMMAND_H
#define PANEL_COMMANDS_LOG_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// \throws std::runtime_error when the driver cannot be loaded, or the file cannot be written to begin with
ExitStatus runLog(const Options& options);

} // namespace plc

#endif
