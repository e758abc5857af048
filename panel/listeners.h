/// \file
/// \brief What a user asked to be told of the link: --trace and --capture.
#ifndef PANEL_LISTENERS_H
#define PANEL_LISTENERS_H

#include "panel/command_line.h"
#include "panel/session.h"

namespace panel
{

/// To be called once for a command, because it begins the file of the capture anew.
Listeners listenersFor(const Options& options);

} // namespace panel

#endif
