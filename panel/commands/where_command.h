// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel where: where variables lie in the controller, and how their values are put together.
#ifndef PANEL_COMMANDS_WHERE_COMMAND_H
#define PANEL_COMMANDS_WHERE_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Needs neither a controller nor the driver.
ExitStatus runWhere(const Options& options);

} // namespace plc

#endif
