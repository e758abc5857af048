// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel replay: shows the values of a capture, without a controller.
#ifndef PANEL_COMMANDS_REPLAY_COMMAND_H
#define PANEL_COMMANDS_REPLAY_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Plays the capture into the driver and prints the values that its variables have then; as JSON each change.
/// Without variables those of the captured reads are shown.
ExitStatus runReplay(const Options& options);

} // namespace plc

#endif
