// SPDX-License-Identifier: MIT
#include "panel/terminal/terminal.h"

#include <QByteArray>

#include <sys/ioctl.h>
#include <unistd.h>

namespace plc
{

bool knowsEscapeCodes()
{
    const QByteArray terminal = qgetenv("TERM");
    return !terminal.isEmpty() && terminal != "dumb" && terminal != "unknown";
}

bool isTerminal()
{
    return isatty(STDOUT_FILENO) == 1 && knowsEscapeCodes();
}

bool inputIsTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

bool errorsGoToTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool wantsColours()
{
    return isTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR");
}

namespace
{

TerminalSize sizeOf(int descriptor)
{
    TerminalSize size;
    winsize window = {};
    if (ioctl(descriptor, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0) {
        size.columns = window.ws_col;
        size.lines = window.ws_row;
    }
    return size;
}

} // namespace

TerminalSize terminalSize()
{
    return sizeOf(STDOUT_FILENO);
}

int errorTerminalColumns()
{
    return sizeOf(STDERR_FILENO).columns;
}

} // namespace plc
