/// \file
/// \brief plcpanel demo: everything at work against a simulated controller of its own.
#ifndef PANEL_DEMO_COMMAND_H
#define PANEL_DEMO_COMMAND_H

#include "panel/command_line.h"
#include "panel/exit_status.h"

namespace panel
{

/// Prints each step as it is done and a summary at the end. Fails when one value is not what it must be.
/// \throws std::runtime_error when the driver cannot be loaded or no port can be opened
ExitStatus runDemo(const Options& options);

} // namespace panel

#endif
