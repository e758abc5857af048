/// \file
/// \brief What the program's exit status tells a script.
#ifndef PANEL_EXIT_STATUS_H
#define PANEL_EXIT_STATUS_H

namespace panel
{

enum ExitStatus {
    AllGood = 0,          ///< everything asked for was done
    ControllerFailed = 1, ///< something failed at the controller or on the link to it
    WrongCommandLine = 2  ///< nothing was tried: the command line is wrong or the driver cannot be loaded
};

} // namespace panel

#endif
