// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel scan: which stations answer, and which elements can be read.
#ifndef PANEL_COMMANDS_SCAN_COMMAND_H
#define PANEL_COMMANDS_SCAN_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Asks the stations first, where there are any, and then for the ranges of those that answered. Never writes.
ExitStatus runScan(const Options& options);

} // namespace plc

#endif
