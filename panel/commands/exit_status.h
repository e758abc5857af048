// SPDX-License-Identifier: MIT
/// \file
/// \brief What the program's exit status tells a script.
#ifndef PANEL_COMMANDS_EXIT_STATUS_H
#define PANEL_COMMANDS_EXIT_STATUS_H

namespace plc
{

enum ExitStatus {
    AllGood = 0,          ///< everything asked for was done
    ControllerFailed = 1, ///< something failed at the controller or on the link to it
    WrongCommandLine = 2, ///< nothing was tried: the command line is wrong or the driver cannot be loaded

    // Of write alone.
    ReadBackDiffers = 3, ///< all was confirmed, but --verify found another value, or none

    // Of check alone, whose status 1 says that something was not answered.
    VariablesRefused = 3,     ///< the controller refuses variables, or addresses between them
    ControllerNotReached = 4, ///< it could not be reached; of scan as well
    LimitBroken = 5,          ///< nothing was tried: blocks would break a limit of Modbus

    // Of all commands: output whatever else came of it, a capture where all else was good.
    OutputFailed = 6 ///< what was to be printed or captured could not be written
};

} // namespace plc

#endif
