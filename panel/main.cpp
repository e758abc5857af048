// plcpanel: the reference runtime as a program.

#include "panel/check_command.h"
#include "panel/command_line.h"
#include "panel/demo_command.h"
#include "panel/driver_path.h"
#include "panel/exit_status.h"
#include "panel/output.h"
#include "panel/read_command.h"
#include "panel/replay_command.h"
#include "panel/watch_command.h"
#include "panel/write_command.h"

#include <QCoreApplication>

#include <exception>

namespace
{

using namespace panel;

ExitStatus run(Options options)
{
    if (options.settings.driverPath.isEmpty())
        options.settings.driverPath = findDriver(QCoreApplication::applicationDirPath());
    switch (options.command) {
    case Command::Read:
        return runRead(options);
    case Command::Write:
        return runWrite(options);
    case Command::Watch:
        return runWatch(options);
    case Command::Check:
        return runCheck(options);
    case Command::Replay:
        return runReplay(options);
    case Command::Demo:
        return runDemo(options);
    }
    return WrongCommandLine;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (line.wish == CommandLine::ShowText) {
        print(line.text);
        return AllGood;
    }
    if (line.wish == CommandLine::Refuse) {
        complain(line.text);
        return WrongCommandLine;
    }
    try {
        return run(line.options);
    } catch (const std::exception& error) {
        complain(QString::fromStdString(error.what()));
        return WrongCommandLine;
    }
}
