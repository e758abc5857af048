// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel watch on a terminal: a table with keys.
#ifndef PANEL_COMMANDS_WATCH_SCREEN_H
#define PANEL_COMMANDS_WATCH_SCREEN_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Shows the variables until a key or a signal ends it, which is no failure. WatchSignals must be blocked, and
/// wantsScreen() must hold.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runWatchScreen(const Options& options);

} // namespace plc

#endif
