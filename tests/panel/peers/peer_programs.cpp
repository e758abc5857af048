// SPDX-License-Identifier: MIT
#include "panel/peers/peer_programs.h"

#include "support/application.h"

#include <QProcess>
#include <QStandardPaths>

namespace test
{

PeerRun runPeer(const QString& program, const QStringList& arguments)
{
    const int patienceMs = 60000;
    needApplication();
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    PeerRun run;
    if (process.waitForFinished(patienceMs) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.text = process.readAll().toStdString();
    process.kill();
    process.waitForFinished();
    return run;
}

QString mbpollProgram()
{
    return QStandardPaths::findExecutable(QStringLiteral("mbpoll"));
}

QString pythonWithPymodbus()
{
    // The system's: another python3 that comes first does not have the packages of the system.
    const QString python = QStringLiteral("/usr/bin/python3");
    const QStringList look = {QStringLiteral("-c"), QStringLiteral("import pymodbus.server")};
    return runPeer(python, look).status == 0 ? python : QString();
}

} // namespace test
