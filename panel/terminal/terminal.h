// SPDX-License-Identifier: MIT
/// \file
/// \brief The terminal that standard output may be.
#ifndef PANEL_TERMINAL_TERMINAL_H
#define PANEL_TERMINAL_TERMINAL_H

namespace plc
{

/// \return false when the environment names no terminal, or one that knows no escape codes
bool knowsEscapeCodes();

/// \return true when standard output is a terminal that understands escape codes
bool isTerminal();

/// \return true when standard input is a terminal, so that there may be keys
bool inputIsTerminal();

/// \return true when standard error goes to a terminal
bool errorsGoToTerminal();

/// \return true when colours are wanted there: it is a terminal and NO_COLOR is not set
bool wantsColours();

struct TerminalSize {
    int columns = 80;
    int lines = 24;
};

/// \return the size of the terminal as it is now
TerminalSize terminalSize();

/// \return the characters in a line of the terminal that standard error goes to
int errorTerminalColumns();

} // namespace plc

#endif
