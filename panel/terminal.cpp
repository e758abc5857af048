#include "panel/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace panel
{

bool isTerminal()
{
    return isatty(STDOUT_FILENO) == 1 && qgetenv("TERM") != "dumb";
}

bool errorsGoToTerminal()
{
    return isatty(STDERR_FILENO) == 1;
}

bool wantsColours()
{
    return isTerminal() && qEnvironmentVariableIsEmpty("NO_COLOR");
}

TerminalSize terminalSize()
{
    TerminalSize size;
    winsize window = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0) {
        size.columns = window.ws_col;
        size.lines = window.ws_row;
    }
    return size;
}

QString RedrawnLines::draw(const QStringList& lines)
{
    QString text;
    if (m_drawn > 0)
        text += QStringLiteral("\x1b[%1A").arg(m_drawn);
    for (const QString& line : lines)
        text += QLatin1Char('\r') + line + QStringLiteral("\x1b[K\n");
    m_drawn = lines.size();
    return text + QStringLiteral("\x1b[J");
}

QString RedrawnLines::clear()
{
    m_drawn = 0;
    return QStringLiteral("\x1b[H\x1b[2J");
}

} // namespace panel
