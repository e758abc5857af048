// SPDX-License-Identifier: MIT
#include "simulator/command_line.h"

#include "simulator/memory_text.h"

#include <QCommandLineParser>

#include <optional>
#include <stdexcept>

namespace simulator
{

namespace
{

constexpr unsigned long longestDelay = 600000; // ms

[[noreturn]] void refuse(const QString& message)
{
    throw std::invalid_argument(message.toStdString());
}

QString faultHelp()
{
    QString text =
        QStringLiteral("Spoil replies: NAME with this PROBABILITY (0 to 1). Repeatable; together at "
                       "most 1. NAME is one of:");
    for (const FaultKind& kind : faultList())
        text += QStringLiteral("\n%1: %2").arg(QLatin1String(kind.name), QLatin1String(kind.effect));
    return text;
}

QString description()
{
    return QStringLiteral(
        "A simulated Modbus TCP controller: coils and holding registers 0 to 65535 for each unit 1 to 255, "
        "which can "
        "be read as discrete inputs and input registers, too.\nIts first line on standard output is "
        "'listening on "
        "127.0.0.1:PORT'. Ctrl-C or SIGTERM ends it.\n\n"
        "Example: plcsim --port 1502 --load start.txt --dump --fault late=0.1 --fault cut=0.05\n\n"
        "Files of values hold one value per line, numbers decimal or 0x-hexadecimal, # starts a comment:\n"
        "  unit 1 coil 0x0010 1\n"
        "  unit 1 register 8192 1234\n"
        "Values may move (ramp, sine, counter, random) between limits, with a period in milliseconds; what "
        "is "
        "written to one stays:\n"
        "  unit 1 register 100 ramp 0..1000 period 10000\n"
        "  unit 1 register32 102 sine -100000..100000 period 60000\n"
        "  unit 1 coil 16 random period 500");
}

void addOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(description());
    const FaultSettings defaults;
    const QString lateMs = QString::number(defaults.lateMs);
    const QString seed = QString::number(defaults.seed);
    const QString delays = QStringLiteral("%1-%2").arg(defaults.delayFromMs).arg(defaults.delayToMs);
    parser.addVersionOption();
    parser.addOptions({
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")},
        {QStringLiteral("port"), QStringLiteral("Listen on this TCP port; 0, the default, picks a free one."),
         QStringLiteral("N"), QStringLiteral("0")},
        {QStringLiteral("listen"),
         QStringLiteral(
             "Listen on this address, IPv4 or IPv6 in digits; default 127.0.0.1. Whoever reaches another "
             "one can read and write everything."),
         QStringLiteral("ADDRESS"), QLatin1String(defaultListenAddress)},
        {QStringLiteral("remote"), QStringLiteral("Speak remote frames instead of Modbus TCP; wire.md, "
                                                  "installed with libplcdriver-dev, describes them.")},
        {QStringLiteral("load"), QStringLiteral("Start with the values of this file."),
         QStringLiteral("FILE")},
        {QStringLiteral("dump"), QStringLiteral("At the end print every value that is not 0.")},
        {QStringLiteral("dump-file"),
         QStringLiteral("At the end write every value that is not 0 to this file."), QStringLiteral("FILE")},
        {QStringLiteral("refuse"),
         QStringLiteral(
             "Addresses that do not exist (exception 2), for example 100-199; of one unit, of coils or of "
             "registers only: 3:100-199, coils:100-199, 3:registers:100-199. Repeatable."),
         QStringLiteral("[UNIT:][KIND:]FROM-TO")},
        {QStringLiteral("silent"),
         QStringLiteral("Units that do nothing and answer nothing, for example 3,7-9. Repeatable."),
         QStringLiteral("UNIT,...")},
        {QStringLiteral("delay"), QStringLiteral("Every reply takes so many milliseconds; default 0."),
         QStringLiteral("MS"), QStringLiteral("0")},
        {QStringLiteral("fault"), faultHelp(), QStringLiteral("NAME=PROBABILITY")},
        {QStringLiteral("late-ms"),
         QStringLiteral("Delay of late replies in milliseconds; default %1.").arg(lateMs),
         QStringLiteral("MS"), lateMs},
        {QStringLiteral("delay-ms"),
         QStringLiteral("How much later replies with the fault delay come; default %1.").arg(delays),
         QStringLiteral("FROM-TO"), delays},
        {QStringLiteral("seed"),
         QStringLiteral(
             "The same seed and the same requests give the same faults, and the same random values at the "
             "same time since the start; default %1.")
             .arg(seed),
         QStringLiteral("N"), seed},
        {QStringLiteral("trace"), QStringLiteral("Print every request and reply in hex on standard error.")},
        {QStringLiteral("quiet"), QStringLiteral("No summary on standard error at the end.")},
    });
}

/// \return the file that is given; empty where the option is not
QString fileName(const QCommandLineParser& parser, const char* option)
{
    const QString name = parser.value(QLatin1String(option));
    if (name.isEmpty() && parser.isSet(QLatin1String(option)))
        throw std::invalid_argument(std::string("--") + option + " has no value; give the name of a file");
    return name;
}

unsigned long numberOf(const QCommandLineParser& parser, const char* option, unsigned long maximum)
{
    const QString text = parser.value(QLatin1String(option));
    const auto number = parseNumber(text.toStdString(), maximum);
    if (!number)
        refuse(QStringLiteral("--%1 %2: give a number from 0 to %3")
                   .arg(QLatin1String(option), text, QString::number(maximum)));
    return *number;
}

const FaultKind& faultNamed(const QString& name)
{
    QStringList names;
    for (const FaultKind& kind : faultList()) {
        if (name == QLatin1String(kind.name))
            return kind;
        names += QLatin1String(kind.name);
    }
    refuse(QStringLiteral("--fault: there is no fault '%1'; choose among %2")
               .arg(name, names.join(QStringLiteral(", "))));
}

void setFault(FaultSettings& faults, const QString& text)
{
    const QString name = text.section(QLatin1Char('='), 0, 0);
    const FaultKind& kind = faultNamed(name);
    bool isNumber = false;
    const double probability = text.section(QLatin1Char('='), 1).toDouble(&isNumber);
    if (!isNumber)
        refuse(QStringLiteral("--fault %1: give a probability from 0 to 1, for example --fault %2=0.1")
                   .arg(text, name));
    faults.*kind.probability = probability;
}

struct NumberRange {
    unsigned long from;
    unsigned long to;
};

/// "5-9". Nothing unless both ends are there, in order, and at most `maximum`.
std::optional<NumberRange> numbersOf(const QString& text, unsigned long maximum)
{
    const auto from = parseNumber(text.section(QLatin1Char('-'), 0, 0).toStdString(), maximum);
    const auto to = parseNumber(text.section(QLatin1Char('-'), 1).toStdString(), maximum);
    if (!from || !to || *from > *to)
        return std::nullopt;
    return NumberRange{*from, *to};
}

[[noreturn]] void refuseHole(const QString& text)
{
    refuse(QStringLiteral(
               "--refuse %1: give the first and the last address, each from 0 to 65535, for example "
               "--refuse 100-199, in front of them a unit from 1 to 255 and coils or registers if only "
               "these are meant, for example --refuse 3:coils:100-199")
               .arg(text));
}

std::optional<MemoryValue::Kind> kindNamed(const QString& name)
{
    if (name == QLatin1String("coils"))
        return MemoryValue::Coil;
    if (name == QLatin1String("registers"))
        return MemoryValue::Register;
    return std::nullopt;
}

AddressRange holeOf(const QString& text)
{
    QStringList parts = text.split(QLatin1Char(':'));
    const auto addresses = numbersOf(parts.takeLast(), addressCount - 1);
    if (!addresses)
        refuseHole(text);
    AddressRange hole{static_cast<int>(addresses->from), static_cast<int>(addresses->to)};
    if (!parts.isEmpty()) {
        hole.kind = kindNamed(parts.last());
        if (hole.kind)
            parts.removeLast();
    }
    if (!parts.isEmpty()) {
        const auto unit = parseNumber(parts.takeLast().toStdString(), lastUnit);
        if (!unit || *unit < firstUnit)
            refuseHole(text);
        hole.unit = static_cast<int>(*unit);
    }
    if (!parts.isEmpty())
        refuseHole(text);
    return hole;
}

void addUnits(std::vector<int>& units, const QString& text)
{
    for (const QString& part : text.split(QLatin1Char(','))) {
        const bool isRange = part.contains(QLatin1Char('-'));
        const auto range = numbersOf(isRange ? part : part + QLatin1Char('-') + part, lastUnit);
        if (!range || range->from < firstUnit)
            refuse(QStringLiteral("--silent %1: give units from 1 to 255, for example --silent 3,7-9")
                       .arg(text));
        for (unsigned long unit = range->from; unit <= range->to; ++unit)
            units.push_back(static_cast<int>(unit));
    }
}

void setDelays(FaultSettings& faults, const QString& text)
{
    const auto range = numbersOf(text, longestDelay);
    if (!range)
        refuse(QStringLiteral(
                   "--delay-ms %1: give the shortest and the longest delay, each from 0 to %2, for example "
                   "--delay-ms 10-100")
                   .arg(text)
                   .arg(longestDelay));
    faults.delayFromMs = static_cast<int>(range->from);
    faults.delayToMs = static_cast<int>(range->to);
}

Options optionsOf(const QCommandLineParser& parser)
{
    Options options;
    Settings& settings = options.settings;
    settings.port = static_cast<int>(numberOf(parser, "port", 65535));
    settings.faults.lateMs = static_cast<int>(numberOf(parser, "late-ms", longestDelay));
    setDelays(settings.faults, parser.value(QStringLiteral("delay-ms")));
    settings.delayMs = static_cast<int>(numberOf(parser, "delay", longestDelay));
    settings.listenAddress = parser.value(QStringLiteral("listen")).toStdString();
    settings.faults.seed = static_cast<unsigned>(numberOf(parser, "seed", 0xFFFFFFFF));
    for (const QString& text : parser.values(QStringLiteral("fault")))
        setFault(settings.faults, text);
    checkFaults(settings.faults);
    for (const QString& text : parser.values(QStringLiteral("refuse")))
        settings.refused.push_back(holeOf(text));
    for (const QString& text : parser.values(QStringLiteral("silent")))
        addUnits(settings.silentUnits, text);
    settings.remote = parser.isSet(QStringLiteral("remote"));
    options.loadFile = fileName(parser, "load");
    options.dumpFile = fileName(parser, "dump-file");
    options.dump = parser.isSet(QStringLiteral("dump"));
    options.trace = parser.isSet(QStringLiteral("trace"));
    options.quiet = parser.isSet(QStringLiteral("quiet"));
    return options;
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        return {CommandLine::Refuse, {}, parser.errorText()};
    if (parser.isSet(QStringLiteral("help")))
        return {CommandLine::ShowText, {}, parser.helpText()};
    if (parser.isSet(QStringLiteral("version")))
        return {CommandLine::ShowText, {}, QStringLiteral("plcsim " PLCSIM_VERSION "\n")};
    if (!parser.positionalArguments().isEmpty())
        return {CommandLine::Refuse,
                {},
                QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first())};
    try {
        return {CommandLine::Run, optionsOf(parser), {}};
    } catch (const std::invalid_argument& error) {
        return {CommandLine::Refuse, {}, QString::fromStdString(error.what())};
    }
}

} // namespace simulator
