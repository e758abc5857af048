// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel history: prints or draws what was logged to SQLite.
#ifndef PANEL_COMMANDS_HISTORY_COMMAND_H
#define PANEL_COMMANDS_HISTORY_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// \throws std::runtime_error when the file cannot be read, or has none of the names
ExitStatus runHistory(const Options& options);

} // namespace plc

#endif
