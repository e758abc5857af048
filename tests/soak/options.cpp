// SPDX-License-Identifier: MIT
#include "soak/options.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <stdexcept>

namespace soak
{

namespace
{

[[noreturn]] void refuse(const QString& message)
{
    throw std::invalid_argument(message.toStdString());
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Lets panels exchange data with simulated controllers that make every kind of fault, each pair in a "
        "process of its own, and checks that every write ends once, that what is confirmed is in the "
        "controller, that no wrong value is shown, that memory does not grow and that nothing hangs. "
        "Meanwhile "
        "stations are switched off and on, and one panel follows another with its list in another order."));
    parser.addPositionalArgument(QStringLiteral("REQUESTS"),
                                 QStringLiteral("How many requests in all; default 1000000."),
                                 QStringLiteral("[REQUESTS]"));
    parser.addOptions({
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")},
        {QStringLiteral("requests"), QStringLiteral("The same as REQUESTS."), QStringLiteral("N")},
        {QStringLiteral("pairs"), QStringLiteral("Panels, each with a controller; default 8."),
         QStringLiteral("N"), QStringLiteral("8")},
        {QStringLiteral("faults"),
         QStringLiteral("Spoil so many percent of the replies, each kind of fault as often as the others; "
                        "default 10. With 100 no reply is left alone."),
         QStringLiteral("PERCENT"), QStringLiteral("10")},
        {QStringLiteral("remote"), QStringLiteral("Remote frames instead of Modbus TCP.")},
        {QStringLiteral("seed"), QStringLiteral("Of the random numbers; default 1."), QStringLiteral("N"),
         QStringLiteral("1")},
        {QStringLiteral("timeout-ms"), QStringLiteral("How long the panels wait for a reply; default 20."),
         QStringLiteral("MS"), QStringLiteral("20")},
        {QStringLiteral("late-ms"), QStringLiteral("Delay of late replies; default 30."),
         QStringLiteral("MS"), QStringLiteral("30")},
        {QStringLiteral("hang-ms"), QStringLiteral("What takes longer hangs; default 60000."),
         QStringLiteral("MS"), QStringLiteral("60000")},
        {QStringLiteral("driver"), QStringLiteral("The driver library; looked for beside the program."),
         QStringLiteral("PATH")},
    });
}

long numberOf(const QString& what, const QString& text, long least, long most)
{
    bool isNumber = false;
    const long number = text.toLong(&isNumber);
    if (!isNumber || number < least || number > most)
        refuse(QStringLiteral("%1 %2: give a number from %3 to %4").arg(what, text).arg(least).arg(most));
    return number;
}

int optionNumber(const QCommandLineParser& parser, const char* name, long least, long most)
{
    const QString option = QLatin1String(name);
    return static_cast<int>(numberOf(QStringLiteral("--") + option, parser.value(option), least, most));
}

std::vector<const simulator::FaultKind*> everyFault()
{
    std::vector<const simulator::FaultKind*> faults;
    for (const simulator::FaultKind& kind : simulator::faultList())
        faults.push_back(&kind);
    return faults;
}

Options optionsOf(const QCommandLineParser& parser)
{
    Options options;
    const QStringList others = parser.positionalArguments();
    if (others.size() > 1)
        refuse(QStringLiteral("unexpected argument '%1'").arg(others[1]));
    const QString requests = others.value(0, parser.value(QStringLiteral("requests")));
    if (!requests.isEmpty())
        options.requests = numberOf(QStringLiteral("REQUESTS"), requests, 1, 1000000000);
    options.pairs = optionNumber(parser, "pairs", 1, 64);
    options.percent = optionNumber(parser, "faults", 0, 100);
    options.faults = everyFault();
    options.seed = static_cast<unsigned>(optionNumber(parser, "seed", 0, 1000000));
    options.timeoutMs = optionNumber(parser, "timeout-ms", 1, 60000);
    options.lateMs = optionNumber(parser, "late-ms", 0, 600000);
    options.hangMs = optionNumber(parser, "hang-ms", 1000, 3600000);
    options.remote = parser.isSet(QStringLiteral("remote"));
    options.driverPath = parser.value(QStringLiteral("driver"));
    return options;
}

/// Qt takes the program's name from an application. Before the pairs are processes of their own there is none.
QString helpOf(const QCommandLineParser& parser)
{
    int argc = 1;
    char name[] = "plcsoak";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    return parser.helpText();
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        return {CommandLine::Refuse, {}, parser.errorText()};
    if (parser.isSet(QStringLiteral("help")))
        return {CommandLine::ShowText, {}, helpOf(parser)};
    try {
        return {CommandLine::Run, optionsOf(parser), {}};
    } catch (const std::invalid_argument& error) {
        return {CommandLine::Refuse, {}, QString::fromStdString(error.what())};
    }
}

} // namespace soak
