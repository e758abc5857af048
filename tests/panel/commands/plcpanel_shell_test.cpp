// SPDX-License-Identifier: MIT
// The live display under a shell that stops and continues it.

#include "simulator/simulated_controller.h"
#include "support/built_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <regex>
#include <string>

namespace
{

const int patienceMs = 20000;

/// An interactive shell in a terminal of its own.
class Shell
{
public:
    Shell()
    {
        winsize window = {};
        window.ws_col = 200;
        window.ws_row = 24;
        m_process = forkpty(&m_terminal, nullptr, nullptr, &window);
        if (m_process == 0) {
            setenv("TERM", "xterm", 1);
            setenv("PS1", "READY ", 1);
            execlp("bash", "bash", "--norc", "--noprofile", "--noediting", "-i", nullptr);
            _exit(127);
        }
    }

    ~Shell()
    {
        close(m_terminal); // hangs up
        waitpid(m_process, nullptr, 0);
    }

    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    void type(const std::string& keys)
    {
        m_seen.clear();
        EXPECT_EQ(write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /// \return what was drawn since the last keys, as soon as \a isThere says so of it
    std::string drawnUntil(const std::function<bool(const std::string&)>& isThere)
    {
        QElapsedTimer clock;
        clock.start();
        while (!isThere(m_seen) && clock.elapsed() < patienceMs && readSome()) {
        }
        EXPECT_TRUE(isThere(m_seen)) << m_seen;
        return m_seen;
    }

    std::string drawnUntil(const char* text)
    {
        return drawnUntil([text](const std::string& drawn) { return drawn.find(text) != std::string::npos; });
    }

private:
    bool readSome()
    {
        pollfd entry = {m_terminal, POLLIN, 0};
        if (poll(&entry, 1, 100) == 0)
            return true;
        char bytes[4096];
        const ssize_t size = read(m_terminal, bytes, sizeof bytes);
        if (size > 0)
            m_seen.append(bytes, static_cast<std::size_t>(size));
        return size > 0;
    }

    int m_terminal = -1;
    pid_t m_process = -1;
    std::string m_seen;
};

const std::regex cursorUp("\x1b\\[[0-9]+A");

bool isRedrawn(const std::string& drawn)
{
    return std::regex_search(drawn, cursorUp);
}

TEST(PlcpanelInAShell, DrawsAnewBelowWhatTheShellWroteWhileItWasStopped)
{
    simulator::SimulatedController controller{simulator::Settings()};
    controller.start();
    Shell shell;
    shell.drawnUntil("READY");
    shell.type(std::string(builtPlcpanel()) + " watch 9:100 --interval 50 --driver " + builtDriver() +
               " --controller 127.0.0.1:" + std::to_string(controller.port()) + "\n");
    shell.drawnUntil(isRedrawn);
    shell.type("\x1a");
    shell.drawnUntil("Stopped");
    shell.drawnUntil("READY");
    shell.type("fg\n");
    const std::string drawn = shell.drawnUntil(isRedrawn);
    std::smatch up;
    ASSERT_TRUE(std::regex_search(drawn, up, cursorUp));
    EXPECT_THAT(up.prefix().str(),
                testing::HasSubstr("9:100     ")); // a whole table before any is drawn over
    shell.type("\x03");
    shell.drawnUntil("READY");
}

} // namespace
