// SPDX-License-Identifier: MIT
// A program in a terminal of its own, whose modes outlive it.
#ifndef TESTS_PANEL_PROGRAM_IN_TERMINAL_H
#define TESTS_PANEL_PROGRAM_IN_TERMINAL_H

#include "panel/drawn_screen.h"

#include <QStringList>

#include <map>
#include <string>

#include <sys/types.h>
#include <termios.h>

namespace test
{

struct TerminalKind {
    int columns = 100;
    int lines = 20;
    std::map<std::string, std::string> environment = {{"TERM", "xterm"}};
};

class ProgramInTerminal
{
public:
    /// \param arguments the program first; it is looked for where the shell does
    explicit ProgramInTerminal(const QStringList& arguments, const TerminalKind& kind = TerminalKind());
    ~ProgramInTerminal(); ///< kills it
    ProgramInTerminal(const ProgramInTerminal&) = delete;
    ProgramInTerminal& operator=(const ProgramInTerminal&) = delete;

    /// Waits until the screen has \a text somewhere. \return false, and a failure, when it never does
    bool shows(const std::string& text);

    /// Waits until it has it no more.
    bool hides(const std::string& text);

    void type(const std::string& keys);
    void send(int signal);
    void resize(int columns, int lines);

    /// Takes what comes for so long. \return how many bytes came
    std::size_t bytesIn(int milliseconds);

    /// Waits for its end. \return the exit status; -1 when a signal ended it
    int end();

    bool isTaken() const { return (modes() & (ICANON | ECHO)) == 0; }
    bool isAsBefore() const { return modes() == m_before; }

    const DrawnScreen& screen() const { return m_screen; }
    const std::string& bytes() const { return m_bytes; } ///< all that came

private:
    tcflag_t modes() const;
    bool draw(int milliseconds);

    int m_master = -1;
    int m_terminal = -1;
    pid_t m_process = -1;
    tcflag_t m_before = 0;
    DrawnScreen m_screen;
    std::string m_bytes;
};

} // namespace test

#endif
