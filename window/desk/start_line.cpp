// SPDX-License-Identifier: MIT
#include "window/desk/start_line.h"

#include "panel/commands/command_line.h"
#include "runtime/model/printable.h"
#include "window/captures/loaded_capture.h"

#include <QFileInfo>

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
    "  2  nothing was tried: the command line is wrong, or the driver cannot be loaded,\n"
    "     or there is no display\n";

/// \return what is to be shown of a command line that is refused because of \a message
StartLine refusal(const QString& message)
{
    return {StartLine::Refuse,
            QStringLiteral("plcwindow: %1\nplcwindow --help explains what it takes.").arg(message),
            {}};
}

/// \return the first argument that is the name of a capture and no option's value; empty when there is none
QString captureAmong(const QStringList& arguments)
{
    const auto isCapture = [](const QString& argument) {
        return captureEndings().contains(QFileInfo(argument).suffix());
    };
    for (int index = 1; index < arguments.size(); ++index) {
        const bool isFree = !arguments[index].startsWith(QLatin1String("--")) &&
                            !arguments[index - 1].startsWith(QLatin1String("--"));
        if (isFree && isCapture(arguments[index]))
            return arguments[index];
    }
    return QString();
}

} // namespace

bool hasDisplay(const QStringList& arguments)
{
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(name))
            return true;
    }
    return arguments.contains(QStringLiteral("-platform"));
}

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
            return refusal(QStringLiteral("%1 is for plcpanel watch, not for the window").arg(name));
    }
    const QString capture = captureAmong(arguments);
    if (!capture.isEmpty())
        return refusal(
            QStringLiteral("%1 looks like a capture; start plcwindow without it, and open it by File, "
                           "Open capture")
                .arg(excerpt(capture)));
    QStringList words = {QStringLiteral("plcpanel"), QStringLiteral("watch")};
    words += arguments.mid(1);
    const CommandLine line = parseCommandLine(words);
    // Its last line names the help of another program.
    if (line.wish == CommandLine::Refuse)
        return refusal(line.text.section(QLatin1Char('\n'), 0, -2));
    if (line.wish != CommandLine::Run)
        return {StartLine::ShowText, line.text, {}};
    Watched watched;
    watched.settings = line.options.settings;
    watched.captureTo = line.options.captureTo;
    for (const Variable& variable : line.options.variables)
        watched.variables.push_back(asListed(variable));
    watched.variables.insert(watched.variables.end(), line.options.listed.begin(), line.options.listed.end());
    return {StartLine::Run, {}, watched};
}

} // namespace plc
