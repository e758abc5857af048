// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel watch: shows values live.
#ifndef PANEL_COMMANDS_WATCH_COMMAND_H
#define PANEL_COMMANDS_WATCH_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Refreshes the variables until SIGINT, SIGTERM or SIGHUP ends it, which is no failure; with options.once
/// until each was read or has failed, which tells the exit status.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runWatch(const Options& options);

} // namespace plc

#endif
