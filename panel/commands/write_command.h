// SPDX-License-Identifier: MIT
/// \file
/// \brief plcpanel write: writes values and waits for the controller's confirmation.
#ifndef PANEL_COMMANDS_WRITE_COMMAND_H
#define PANEL_COMMANDS_WRITE_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"

namespace plc
{

/// Writes one after the other, so that they take effect in the order in which they are typed and one that
/// fails takes no other with it. When the controller cannot be reached, the rest is not tried.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runWrite(const Options& options);

} // namespace plc

#endif
