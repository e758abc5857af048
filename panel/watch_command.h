/// \file
/// \brief plcpanel watch: shows values live.
#ifndef PANEL_WATCH_COMMAND_H
#define PANEL_WATCH_COMMAND_H

#include "panel/command_line.h"
#include "panel/exit_status.h"

namespace panel
{

/// Refreshes the variables until SIGINT, SIGTERM or SIGHUP ends it, which is no failure; with options.once
/// until each was read or has failed, which tells the exit status.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runWatch(const Options& options);

} // namespace panel

#endif
