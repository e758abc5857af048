// SPDX-License-Identifier: MIT
#include "window/desk/start_line.h"

#include "panel/commands/command_line.h"

namespace plc
{

namespace
{

/// What of plcpanel watch is not for a window, which shows it in other ways.
const char* const notHere[] = {"once", "json", "hex", "stats", "trace", "interval", "part"};

const char* const help =
    "Usage: plcwindow [VARIABLE...] [OPTIONS]\n"
    "\n"
    "Shows the values of a controller in a window: as a table, as curves, with its stations and every\n"
    "frame. Without arguments it asks for a controller, and offers a simulated one.\n"
    "\n"
    "It takes variables, lists and options as plcpanel watch does (plcpanel watch --help explains them),\n"
    "but for --once, --json, --hex, --stats, --trace, --interval and --part.\n"
    "\n"
    "Options:\n"
    "  -h, --help     Show this text.\n"
    "  -v, --version  Show the version.\n"
    "\n"
    "Examples:\n"
    "  plcwindow --vars machine.csv --controller 192.168.0.10\n"
    "  plcwindow 9:100x4 0:17 14:200 --controller 127.0.0.1:1502\n"
    "\n"
    "Exit status:\n"
    "  0  it was closed\n"
    "  2  nothing was tried: the command line is wrong, or the driver cannot be loaded\n";

} // namespace

StartLine parseStartLine(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return {};
    if (arguments.contains(QStringLiteral("--version")) || arguments.contains(QStringLiteral("-v")))
        return {StartLine::ShowText, QStringLiteral("plcwindow " PLCWINDOW_VERSION "\n"), {}};
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h")))
        return {StartLine::ShowText, QLatin1String(help), {}};
    for (const char* option : notHere) {
        const QString name = QStringLiteral("--") + QLatin1String(option);
        if (arguments.contains(name))
            return {StartLine::Refuse,
                    QStringLiteral("%1 is for plcpanel watch, not for the window").arg(name),
                    {}};
    }
    QStringList words = {QStringLiteral("plcpanel"), QStringLiteral("watch")};
    words += arguments.mid(1);
    const CommandLine line = parseCommandLine(words);
    if (line.wish != CommandLine::Run)
        return {line.wish == CommandLine::Refuse ? StartLine::Refuse : StartLine::ShowText, line.text, {}};
    Watched watched;
    watched.settings = line.options.settings;
    watched.captureTo = line.options.captureTo;
    for (const Variable& variable : line.options.variables)
        watched.variables.push_back(asListed(variable));
    watched.variables.insert(watched.variables.end(), line.options.listed.begin(), line.options.listed.end());
    return {StartLine::Run, {}, watched};
}

} // namespace plc
