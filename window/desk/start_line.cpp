// SPDX-License-Identifier: MIT
#include "window/desk/start_line.h"

#include "panel/commands/command_help.h"
#include "panel/commands/command_line.h"

namespace plc
{

namespace
{

/// What of plcpanel watch is not for a window, which shows it in other ways.
const char* const notHere[] = {"once", "json", "hex", "stats", "trace", "interval"};

QString helpOfWindow()
{
    QString text = helpText(Command::Watch);
    text = text.mid(text.indexOf(QLatin1Char('\n')) + 1);
    return QStringLiteral(
               "Usage: plcwindow [VARIABLE...] [OPTIONS]\n\n"
               "Without any it asks for a controller. Otherwise it takes what plcpanel watch takes, but for "
               "--once, --json, --hex, --stats, --trace and --interval.\n") +
           text;
}

} // namespace

StartLine parseStartLine(const QStringList& arguments)
{
    if (arguments.size() < 2)
        return {};
    if (arguments.contains(QStringLiteral("--version")) || arguments.contains(QStringLiteral("-v")))
        return {StartLine::ShowText, QStringLiteral("plcwindow " PLCWINDOW_VERSION "\n"), {}};
    if (arguments.contains(QStringLiteral("--help")) || arguments.contains(QStringLiteral("-h")))
        return {StartLine::ShowText, helpOfWindow(), {}};
    for (const char* option : notHere) {
        const QString name = QStringLiteral("--") + QLatin1String(option);
        if (arguments.contains(name))
            return {StartLine::Refuse,
                    QStringLiteral("%1 is for plcpanel watch; the window shows it itself").arg(name),
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
