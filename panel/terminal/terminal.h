/// \file
/// \brief The terminal that standard output may be.
#ifndef PANEL_TERMINAL_TERMINAL_H
#define PANEL_TERMINAL_TERMINAL_H

#include <QString>
#include <QStringList>

namespace plc
{

/// \return true when standard output is a terminal that understands escape codes
bool isTerminal();

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

/// Lines that are drawn over the ones drawn before. It leaves the cursor below them and changes no mode of
/// the terminal, so there is nothing to put back in order, however the program ends.
class RedrawnLines
{
public:
    /// \return the text that draws \a lines; each must be shorter than the terminal is wide, and all together
    ///         must be fewer than it is high
    QString draw(const QStringList& lines);

    /// The next ones are drawn below whatever the terminal shows, e.g. after the program was suspended.
    void startAnew() { m_drawn = 0; }

    /// \return the text that clears the terminal, e.g. because lines were broken when its size changed
    QString clear();

private:
    int m_drawn = 0;
};

} // namespace plc

#endif
