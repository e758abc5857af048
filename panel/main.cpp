// SPDX-License-Identifier: MIT
// plcpanel: the reference runtime as a program.

#include "panel/commands/check_command.h"
#include "panel/commands/command_line.h"
#include "panel/commands/demo_command.h"
#include "panel/commands/exit_status.h"
#include "panel/commands/history_command.h"
#include "panel/commands/log_command.h"
#include "panel/commands/read_command.h"
#include "panel/commands/replay_command.h"
#include "panel/commands/scan_command.h"
#include "panel/commands/watch_command.h"
#include "panel/commands/where_command.h"
#include "panel/commands/write_command.h"
#include "panel/session/listeners.h"
#include "panel/terminal/output.h"
#include "runtime/host/driver_path.h"

#include <QCoreApplication>

#include <csignal>
#include <stdexcept>
#include <string>
#include <utility>

namespace
{

using namespace plc;

QString driverOfThisProgram()
{
    try {
        return findDriver(QCoreApplication::applicationDirPath());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string(error.what()) + " with --driver PATH");
    }
}

ExitStatus run(Options options)
{
    const bool needsDriver = options.command != Command::Where && options.command != Command::History;
    if (needsDriver && options.settings.driverPath.isEmpty())
        options.settings.driverPath = driverOfThisProgram();
    switch (options.command) {
    case Command::Read:
        return runRead(options);
    case Command::Write:
        return runWrite(options);
    case Command::Watch:
        return runWatch(options);
    case Command::Check:
        return runCheck(options);
    case Command::Where:
        return runWhere(options);
    case Command::Scan:
        return runScan(options);
    case Command::Log:
        return runLog(options);
    case Command::History:
        return runHistory(options);
    case Command::Replay:
        return runReplay(options);
    case Command::Demo:
        return runDemo(options);
    }
    return WrongCommandLine;
}

ExitStatus obey(CommandLine line)
{
    if (line.wish == CommandLine::ShowText) {
        print(line.text);
        return AllGood;
    }
    if (line.wish == CommandLine::Refuse) {
        complain(line.text);
        return WrongCommandLine;
    }
    try {
        return run(std::move(line.options));
    } catch (const std::exception& error) {
        complain(QString::fromStdString(error.what()));
        return WrongCommandLine;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    keepStandardDescriptors();
    std::signal(SIGXFSZ, SIG_IGN); // a file that may not get longer is told of like a disk that is full
    const QCoreApplication application(argc, argv);
    preferUtf8();
    const ExitStatus status = obey(parseCommandLine(QCoreApplication::arguments()));
    const bool isCaptureLost =
        status == AllGood && captureFailed(); // what failed at the controller goes before
    return outputFailed() || isCaptureLost ? OutputFailed : status;
}
