// SPDX-License-Identifier: MIT
#include "panel/program_in_terminal.h"

#include "support/waiting.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <csignal>
#include <cstdlib>

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

namespace test
{

namespace
{

[[noreturn]] void runIn(int terminal, const QStringList& arguments, const TerminalKind& kind)
{
    login_tty(terminal);
    unsetenv("NO_COLOR");
    for (const auto& entry : kind.environment)
        setenv(entry.first.c_str(), entry.second.c_str(), 1);
    std::vector<std::string> texts;
    for (const QString& argument : arguments)
        texts.push_back(argument.toStdString());
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    _exit(127);
}

/// What follows a failure would wait in vain.
int patience()
{
    return testing::Test::HasFailure() ? 500 : patienceMs;
}

winsize windowOf(int columns, int lines)
{
    winsize window = {};
    window.ws_col = static_cast<unsigned short>(columns);
    window.ws_row = static_cast<unsigned short>(lines);
    return window;
}

} // namespace

ProgramInTerminal::ProgramInTerminal(const QStringList& arguments, const TerminalKind& kind)
    : m_screen(kind.columns, kind.lines)
{
    winsize window = windowOf(kind.columns, kind.lines);
    EXPECT_EQ(openpty(&m_master, &m_terminal, nullptr, nullptr, &window), 0);
    m_before = modes();
    m_process = fork();
    if (m_process == 0) {
        close(m_master);
        runIn(m_terminal, arguments, kind);
    }
}

ProgramInTerminal::~ProgramInTerminal()
{
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    close(m_terminal);
    close(m_master);
}

tcflag_t ProgramInTerminal::modes() const
{
    termios state = {};
    EXPECT_EQ(tcgetattr(m_terminal, &state), 0);
    return state.c_lflag;
}

/// \return true when something came
bool ProgramInTerminal::draw(int milliseconds)
{
    pollfd entry = {m_master, POLLIN, 0};
    char bytes[4096];
    if (poll(&entry, 1, milliseconds) <= 0)
        return false;
    const ssize_t size = read(m_master, bytes, sizeof bytes);
    if (size <= 0)
        return false;
    const std::string came(bytes, static_cast<std::size_t>(size));
    m_bytes += came;
    m_screen.take(came);
    return true;
}

bool ProgramInTerminal::shows(const std::string& text)
{
    QElapsedTimer clock;
    clock.start();
    while (m_screen.text().find(text) == std::string::npos) {
        if (clock.elapsed() > patience()) {
            ADD_FAILURE() << text << " is not in\n" << m_screen.text();
            return false;
        }
        draw(20);
    }
    return true;
}

bool ProgramInTerminal::hides(const std::string& text)
{
    QElapsedTimer clock;
    clock.start();
    while (m_screen.text().find(text) != std::string::npos) {
        if (clock.elapsed() > patience()) {
            ADD_FAILURE() << text << " is still in\n" << m_screen.text();
            return false;
        }
        draw(20);
    }
    return true;
}

void ProgramInTerminal::type(const std::string& keys)
{
    EXPECT_EQ(write(m_master, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

void ProgramInTerminal::send(int signal)
{
    kill(m_process, signal);
}

void ProgramInTerminal::resize(int columns, int lines)
{
    const winsize window = windowOf(columns, lines);
    m_screen.resize(columns, lines);
    EXPECT_EQ(ioctl(m_master, TIOCSWINSZ, &window), 0);
}

std::size_t ProgramInTerminal::bytesIn(int milliseconds)
{
    const std::size_t before = m_bytes.size();
    QElapsedTimer clock;
    clock.start();
    for (qint64 left = milliseconds; left > 0; left = milliseconds - clock.elapsed())
        draw(static_cast<int>(left));
    return m_bytes.size() - before;
}

int ProgramInTerminal::end()
{
    int ended = 0;
    QElapsedTimer clock;
    clock.start();
    while (waitpid(m_process, &ended, WNOHANG) == 0) {
        draw(20); // a full terminal would hold it up
        if (clock.elapsed() > patience()) {
            ADD_FAILURE() << "it does not end";
            return -1;
        }
    }
    while (draw(0)) {
    }
    m_process = -1;
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
}

} // namespace test
