// SPDX-License-Identifier: MIT
#include "panel/plcpanel_run.h"

#include "support/application.h"
#include "support/built_files.h"

#include <QElapsedTimer>

#include <csignal>

namespace test
{

namespace
{

// Long enough for a busy machine; a program that takes so long has failed.
const int patienceMs = 60000;
const int lookMs = 20;

QStringList withDriver(const QStringList& arguments)
{
    const QString command = arguments.value(0);
    const bool needsNone = command == QLatin1String("where") || command == QLatin1String("history");
    if (needsNone || arguments.contains(QStringLiteral("--driver")))
        return arguments;
    return arguments + QStringList{QStringLiteral("--driver"), QString::fromUtf8(builtDriver())};
}

void start(QProcess* process, const QStringList& arguments)
{
    needApplication();
    process->start(QString::fromUtf8(builtPlcpanel()), arguments);
}

RunResult endOf(QProcess* process, const std::string& outBefore)
{
    RunResult run;
    const bool ended = process->waitForFinished(patienceMs) || process->state() == QProcess::NotRunning;
    if (ended && process->exitStatus() == QProcess::NormalExit)
        run.status = process->exitCode();
    run.out = outBefore + process->readAllStandardOutput().toStdString();
    run.errors = process->readAllStandardError().toStdString();
    process->kill();
    process->waitForFinished();
    return run;
}

} // namespace

RunResult plcpanel(const QStringList& arguments)
{
    QProcess process;
    start(&process, withDriver(arguments));
    return endOf(&process, std::string());
}

RunResult plcpanelInShell(const char* script, const QStringList& arguments)
{
    needApplication();
    QProcess process;
    process.start(QStringLiteral("/bin/bash"),
                  QStringList{QStringLiteral("-c"), QString::fromLatin1(script), QStringLiteral("bash"),
                              QString::fromUtf8(builtPlcpanel())} +
                      withDriver(arguments));
    return endOf(&process, std::string());
}

Plcpanel::Plcpanel(const QStringList& arguments)
{
    start(&m_process, withDriver(arguments));
}

Plcpanel::~Plcpanel()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool Plcpanel::eventually(const std::function<bool(const std::string& out)>& condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition(m_out)) {
        if (clock.elapsed() > patienceMs)
            return false;
        m_process.waitForReadyRead(lookMs);
        m_out += m_process.readAllStandardOutput().toStdString();
    }
    return true;
}

void Plcpanel::type(const char* text)
{
    m_process.write(text);
    m_process.waitForBytesWritten(patienceMs);
}

RunResult Plcpanel::end()
{
    return endOf(&m_process, m_out);
}

RunResult Plcpanel::endBy(int signal)
{
    if (m_process.processId() > 0) // 0, where it did not start, would mean the test itself
        kill(static_cast<pid_t>(m_process.processId()), signal);
    return endOf(&m_process, m_out);
}

} // namespace test
