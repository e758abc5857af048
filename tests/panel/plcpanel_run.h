// SPDX-License-Identifier: MIT
// The program plcpanel, run as a user runs it.
#ifndef TESTS_PANEL_PLCPANEL_RUN_H
#define TESTS_PANEL_PLCPANEL_RUN_H

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>

namespace test
{

/// How it ended and what it said.
struct RunResult {
    int status = -1; ///< exit status; -1 when it was killed or did not end
    std::string out;
    std::string errors;
};

/// Runs it to its end. The driver is the one that the tests were built with, unless the arguments name one or the
/// command needs none.
RunResult plcpanel(const QStringList& arguments);

/// The same from a shell. \param script runs it as "$@", e.g. "\"$@\" >/dev/full"
RunResult plcpanelInShell(const char* script, const QStringList& arguments);

/// A running one.
class Plcpanel
{
public:
    explicit Plcpanel(const QStringList& arguments);
    ~Plcpanel(); ///< kills it

    /// Waits until its output so far fulfils \a condition. \return false when it never does
    bool eventually(const std::function<bool(const std::string& out)>& condition);

    /// Puts \a text into its standard input.
    void type(const char* text);

    /// Waits for the end, which it comes to by itself.
    RunResult end();

    /// Sends the signal and waits for the end.
    RunResult endBy(int signal);

private:
    QProcess m_process;
    std::string m_out;
};

} // namespace test

#endif
