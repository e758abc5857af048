// SPDX-License-Identifier: MIT
#include "panel/commands/command_line.h"

#include "capture/capture.h"
#include "history/local_time.h"
#include "panel/commands/command_help.h"
#include "panel/commands/named_variables.h"
#include "panel/commands/scan_ranges.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/protocol.h"
#include "runtime/model/listed_value.h"
#include "runtime/model/printable.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace plc
{

namespace
{

const int defaultPort = 502;

[[noreturn]] void refuse(const QString& message)
{
    throw std::invalid_argument(message.toStdString());
}

/// \param option of the command or of others, and the only name for what it says
bool isGiven(const QCommandLineParser& parser, const char* option)
{
    return parser.optionNames().contains(QLatin1String(option));
}

/// \return the number that \a option is given; \a otherwise when it is not given
int numberOf(const QCommandLineParser& parser, const char* option, int least, int most, int otherwise)
{
    if (!isGiven(parser, option))
        return otherwise;
    const QString name = QLatin1String(option);
    bool isNumber = false;
    const int number = parser.value(name).toInt(&isNumber);
    if (!isNumber || number < least || number > most)
        refuse(QStringLiteral("--%1 %2: give a number from %3 to %4")
                   .arg(name, excerpt(parser.value(name)))
                   .arg(least)
                   .arg(most));
    return number;
}

/// Splits "HOST[:PORT]"; an address with colons of its own stands in brackets when a port follows.
void setController(const QString& text, Settings* settings)
{
    const int bracket = text.indexOf(QLatin1Char(']'));
    const bool manyColons = text.count(QLatin1Char(':')) > 1;
    const int colon = text.indexOf(QLatin1Char(':'), bracket < 0 ? 0 : bracket);
    const bool hasPort = colon >= 0 && (bracket >= 0 || !manyColons);
    settings->host = hasPort ? text.left(colon) : text;
    settings->host.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    settings->port = defaultPort;
    bool isNumber = true;
    if (hasPort)
        settings->port = text.mid(colon + 1).toInt(&isNumber);
    if (settings->host.isEmpty() || !isNumber || settings->port < 1 || settings->port > 65535)
        refuse(QStringLiteral(
                   "--controller %1: give a name or address, and after a colon a port from 1 to 65535, for "
                   "example 192.168.0.10:502")
                   .arg(excerpt(text)));
}

QString replayedFile(const QCommandLineParser& parser)
{
    const QStringList words = parser.positionalArguments();
    if (words.size() < 2)
        refuse(QStringLiteral(
            "no capture is given; plcpanel replay FILE [AREA:ADDRESS[xCOUNT]...] is expected"));
    return words.at(1);
}

/// A value that is refreshed seldom is not stale before its next refresh is late.
void setPoll(const QCommandLineParser& parser, Settings* settings)
{
    const int longestPollMs = 3500000;
    settings->pollMs = numberOf(parser, "poll", 0, longestPollMs, settings->pollMs);
    if (isGiven(parser, "poll"))
        settings->staleAfterMs += settings->pollMs;
}

/// \param settings where nothing is said
Settings settingsOf(const QCommandLineParser& parser, Command command, Settings settings)
{
    settings.timeoutMs = numberOf(parser, "timeout", 1, 60000, settings.timeoutMs);
    settings.retryLimit = numberOf(parser, "retries", 0, 1000, settings.retryLimit);
    if (command != Command::Replay)
        settings.gapMs = numberOf(parser, "gap", 0, 60000, settings.gapMs);
    if (command == Command::Watch || command == Command::Log)
        setPoll(parser, &settings);
    settings.maxBlockCount =
        numberOf(parser, "max-block", smallestBlockCount, largestBlockCount, settings.maxBlockCount);
    if (isGiven(parser, "driver"))
        settings.driverPath = parser.value(QStringLiteral("driver"));
    if (isGiven(parser, "driver") && settings.driverPath.isEmpty())
        refuse(QStringLiteral("--driver: give the path of libplcdriver.so"));
    if (command == Command::Demo)
        return settings;
    if (command == Command::Where || command == Command::Scan) // they take stations as they come
        settings.multiStation = true;
    if (command == Command::Where)
        return settings;
    settings.remoteMode = settings.remoteMode || isGiven(parser, "remote");
    settings.station = numberOf(parser, "station", 0, lastStation, settings.station);
    settings.multiStation = settings.multiStation || isGiven(parser, "multi-station");
    const bool isDryRun = command == Command::Write && isGiven(parser, "dry-run");
    if (command == Command::Replay || (isDryRun && !isGiven(parser, "controller")))
        return settings;
    if (!isGiven(parser, "controller"))
        refuse(QStringLiteral("--controller is missing; say which controller, for example --controller "
                              "192.168.0.10:502"));
    setController(parser.value(QStringLiteral("controller")), &settings);
    return settings;
}

Variable variableOf(const QString& text)
{
    QString error;
    const auto variable = parseVariable(text, &error);
    if (!variable)
        refuse(error);
    return *variable;
}

/// \return why no frame carries the place of \a variable; a broadcast has its place, too
QString placeRefusal(Variable variable, const Settings& settings)
{
    if (variable.station == broadcastStation)
        variable.station = settings.station;
    return readRefusal(variable, settings);
}

/// \return what is against a variable that is typed
QString commandRefusal(Command command, const Variable& variable, const Settings& settings)
{
    return command == Command::Where ? placeRefusal(variable, settings) : readRefusal(variable, settings);
}

Variable readableVariable(const QString& text, Command command, const Settings& settings)
{
    if (text.contains(QLatin1Char('=')))
        refuse(QStringLiteral("%1: a value is given, but nothing is written here; plcpanel write does that")
                   .arg(excerpt(text)));
    const Variable variable = variableOf(text);
    const QString words = commandRefusal(command, withStation(variable, settings), settings);
    if (!words.isEmpty())
        refuse(QStringLiteral("%1: %2").arg(excerpt(text), words));
    return variable;
}

/// AREA:ADDRESS=VALUE[,VALUE...]
WriteTask addressedTask(const QString& text)
{
    const int sign = text.indexOf(QLatin1Char('='));
    if (sign < 0)
        refuse(
            QStringLiteral("\"%1\" names no value; AREA:ADDRESS=VALUE[,VALUE...] is expected, e.g. 9:100=1,2")
                .arg(text));
    WriteTask task;
    task.variable = variableOf(text.left(sign));
    QString error;
    const auto values = parseValues(task.variable.area, text.mid(sign + 1), &error);
    if (!values)
        refuse(QStringLiteral("%1: %2").arg(text, error));
    task.values = *values;
    // A count may be given; then it must be that of the values.
    if (!text.left(sign).contains(QLatin1Char('x')))
        task.variable.count = static_cast<int>(values->size());
    return task;
}

/// NAME=VALUE
WriteTask namedTask(const QString& text, const std::vector<ListedVariable>& list)
{
    const auto named = namedValue(list, text);
    if (!named && !text.contains(QLatin1Char('=')))
        refuse(QStringLiteral("\"%1\" names no value; NAME=VALUE is expected").arg(text));
    if (!named)
        refuse(
            QStringLiteral("%1: the list has no variable of that name; a write names each by its whole name")
                .arg(text));
    QString error;
    const auto values = parseListed(named->variable, named->value, &error);
    if (!values)
        refuse(QStringLiteral("%1: %2").arg(text, error));
    WriteTask task;
    task.variable = named->variable.elements;
    task.values = *values;
    task.listed = named->variable;
    return task;
}

WriteTask writeTaskOf(const QString& text, const Options& options, const std::vector<ListedVariable>& list)
{
    const Settings& settings = options.settings;
    WriteTask task = list.empty() || looksLikeAddress(text) ? addressedTask(text) : namedTask(text, list);
    task.text = text;
    const Variable variable = withStation(task.variable, settings);
    const QString words = writeRefusal(variable, task.values, settings);
    if (!words.isEmpty())
        refuse(QStringLiteral("%1: %2").arg(text, words));
    if (options.verify && variable.station == broadcastStation)
        refuse(QStringLiteral("%1: --verify cannot read it back: no controller answers for station 0")
                   .arg(text));
    return task;
}

/// A list with one wrong line is not used at all.
void refuseErrors(const QString& path, const QStringList& errors)
{
    if (errors.isEmpty())
        return;
    QString text = QStringLiteral("--vars %1: nothing is done until this is put right:").arg(excerpt(path));
    for (const QString& error : errors)
        text += QStringLiteral("\n%1: %2").arg(excerpt(path), error);
    refuse(text);
}

/// \return why \a command cannot do with a variable of a list what it does
QString listedRefusal(Command command, const Variable& variable, const Settings& settings)
{
    switch (command) {
    case Command::Write: // looked at when it is named: others of the list may not be for this command
        return QString();
    case Command::Watch:
    case Command::Log:
    case Command::Check: // before a list goes live
        return cyclicRefusal(variable, settings);
    default:
        return commandRefusal(command, variable, settings);
    }
}

/// \return the list that is given; an empty one without --vars
std::vector<ListedVariable> listOf(const QCommandLineParser& parser, const Options& options)
{
    const QString option = QStringLiteral("vars");
    if (!isGiven(parser, "vars"))
        return {};
    if (options.format == ValueFormat::Hex)
        refuse(
            QStringLiteral("--hex and --vars exclude each other: in a list each variable has its own type, "
                           "and one of them is hex"));
    const QString path = parser.value(option);
    const Settings& settings = options.settings;
    VariableList list = readVariableList(path, [&](const ListedVariable& variable) {
        return listedRefusal(options.command, withStation(variable.elements, settings), settings);
    });
    refuseErrors(path, list.errors);
    if (list.variables.empty())
        refuse(QStringLiteral("--vars %1: the list holds no variable; a line for each is expected below the "
                              "first one, e.g. speed,9,100,,1,int16")
                   .arg(path));
    return std::move(list.variables);
}

QString expectedVariables(Command command)
{
    if (command == Command::Write)
        return QStringLiteral("AREA:ADDRESS=VALUE[,VALUE...] is expected, e.g. 9:100=1,2, or NAME=VALUE with "
                              "a list: --vars FILE");
    return QStringLiteral("AREA:ADDRESS[xCOUNT] is expected, e.g. 9:100x2, or a list of them: --vars FILE");
}

/// Adds those that \a text names, but for those that are there already.
void addNamed(const QString& text, const std::vector<ListedVariable>& list,
              std::vector<ListedVariable>* chosen)
{
    const std::vector<ListedVariable> named = variablesNamed(list, text);
    if (named.empty() && namedValue(list, text))
        refuse(QStringLiteral("%1: a value is given, but nothing is written here; plcpanel write does that")
                   .arg(text));
    if (named.empty())
        refuse(isPattern(text)
                   ? QStringLiteral("%1: no name of the list fits this pattern").arg(text)
                   : QStringLiteral("%1: the list has no variable of that name, and it is no AREA:ADDRESS")
                         .arg(text));
    for (const ListedVariable& variable : named) {
        const auto isSame = [&variable](const ListedVariable& other) { return other.line == variable.line; };
        if (std::none_of(chosen->begin(), chosen->end(), isSame))
            chosen->push_back(variable);
    }
}

/// Where variables of the list are named, the others are left out.
void setReadVariables(const QStringList& texts, std::vector<ListedVariable> list, Options* options)
{
    for (const QString& text : texts) {
        if (list.empty() || looksLikeAddress(text))
            options->variables.push_back(readableVariable(text, options->command, options->settings));
        else
            addNamed(text, list, &options->listed);
    }
    if (options->listed.empty())
        options->listed = std::move(list);
}

void setScan(const QCommandLineParser& parser, const QStringList& texts, Options* options)
{
    const bool namesStations = isGiven(parser, "stations");
    if (namesStations && isGiven(parser, "station"))
        refuse(
            QStringLiteral("--station and --stations exclude each other: the stations that answer are those "
                           "whose elements are asked for"));
    options->tries = numberOf(parser, "tries", 1, 1000, options->tries);
    QString error;
    if (namesStations) {
        const auto stations = parseStations(parser.value(QStringLiteral("stations")), &error);
        if (!stations)
            refuse(QStringLiteral("--stations: %1").arg(error));
        options->stations = *stations;
    }
    for (const QString& text : texts) {
        const auto range = parseScanRange(text, options->settings.remoteMode, &error);
        if (!range)
            refuse(error);
        if (namesStations && range->station >= 0)
            refuse(QStringLiteral("%1: it names a station, and --stations does so, too; give one of both")
                       .arg(excerpt(text)));
        const QString words = readRefusal(withStation(*range, options->settings), options->settings);
        if (!words.isEmpty())
            refuse(QStringLiteral("%1: %2").arg(excerpt(text), words));
        options->variables.push_back(*range);
    }
    if (texts.isEmpty() && !namesStations)
        options->stations = usualStations();
}

void setVariables(const QStringList& texts, std::vector<ListedVariable> list, Options* options)
{
    const Command command = options->command;
    if (command == Command::Demo && !texts.isEmpty())
        refuse(QStringLiteral("\"%1\" is one argument too many; the demo chooses its variables itself")
                   .arg(texts.first()));
    const bool choosesItself = command == Command::Demo || command == Command::Replay;
    const bool takesAll = command != Command::Write && !list.empty();
    if (!choosesItself && !takesAll && texts.isEmpty())
        refuse(QStringLiteral("no variable is given; %1").arg(expectedVariables(command)));
    if (command != Command::Write)
        return setReadVariables(texts, std::move(list), options);
    for (const QString& text : texts)
        options->writes.push_back(writeTaskOf(text, *options, list));
}

/// A capture may say in which blocks its variables were read.
bool saysBlocks(const Options& options)
{
    return options.capture && options.capture->settings();
}

/// Chooses the longest requests that Modbus allows for the variables, or refuses a choice that breaks a
/// limit.
void setBlockCount(const QCommandLineParser& parser, Options* options)
{
    std::vector<Variable> variables = options->variables;
    for (const ListedVariable& listed : options->listed)
        variables.push_back(listed.elements);
    if (!isGiven(parser, "max-block") && !saysBlocks(*options))
        options->settings.maxBlockCount = blockCountFor(variables);
    const QString words = blockRefusal(variables, options->settings.maxBlockCount);
    const bool makesBlocks = options->command == Command::Watch || options->command == Command::Log ||
                             options->command == Command::Replay;
    if (makesBlocks && !words.isEmpty())
        refuse(QStringLiteral("--max-block %1: %2").arg(options->settings.maxBlockCount).arg(words));
}

ValueFormat formatOf(const QCommandLineParser& parser)
{
    const bool hex = isGiven(parser, "hex");
    const bool json = isGiven(parser, "json");
    if (hex && json)
        refuse(QStringLiteral("--hex and --json exclude each other: JSON knows decimal numbers only"));
    return json ? ValueFormat::Json : hex ? ValueFormat::Hex : ValueFormat::Decimal;
}

/// What is told of the link besides the values.
void setLogs(const QCommandLineParser& parser, Options* options)
{
    options->trace = isGiven(parser, "trace");
    if (!isGiven(parser, "capture"))
        return;
    options->captureTo = parser.value(QStringLiteral("capture"));
    const QString words = captureRefusal(options->captureTo);
    if (!words.isEmpty())
        refuse(QStringLiteral("--capture %1: %2").arg(options->captureTo, words));
}

void setWriteWays(const QCommandLineParser& parser, Options* options)
{
    options->verify = isGiven(parser, "verify");
    options->dryRun = isGiven(parser, "dry-run");
    if (options->dryRun && (options->verify || options->trace || !options->captureTo.isEmpty()))
        refuse(
            QStringLiteral("--dry-run sends nothing, so there is nothing to verify, trace or capture; leave "
                           "out --verify, --trace and --capture"));
}

void setNames(const QCommandLineParser& parser, Options* options)
{
    options->names = isGiven(parser, "names");
    if (options->names && !isGiven(parser, "vars"))
        refuse(QStringLiteral("--names prints those of a list; give it with --vars FILE"));
    if (options->names && options->format == ValueFormat::Json)
        refuse(QStringLiteral("--names and --json exclude each other: names are lines of text"));
}

ListPart partOf(const QCommandLineParser& parser)
{
    if (!isGiven(parser, "part"))
        return ListPart();
    QString error;
    const std::optional<ListPart> part = parseListPart(parser.value(QStringLiteral("part")), &error);
    if (!part)
        refuse(QStringLiteral("--part: ") + error);
    return *part;
}

void openCapture(const QCommandLineParser& parser, Options* options)
{
    options->captureFile = replayedFile(parser);
    options->capture = std::make_shared<CaptureReader>(options->captureFile);
    if (isGiven(parser, "port"))
        options->capturedPort = numberOf(parser, "port", 1, 65535, defaultPort);
}

/// A capture may say what it was made with; what the user says goes before.
Settings capturedSettings(const Options& options)
{
    return options.capture ? options.capture->settings().value_or(Settings()) : Settings();
}

/// \return bytes
qint64 rotationSize(const QString& text)
{
    static const QRegularExpression size(QStringLiteral("^([1-9][0-9]{0,8})([kMG])$"));
    const QRegularExpressionMatch match = size.match(text);
    if (!match.hasMatch())
        refuse(QStringLiteral("--rotate-size %1: give a number with k, M or G behind it, e.g. 10M")
                   .arg(excerpt(text)));
    const QChar unit = match.captured(2).at(0);
    const int shift = unit == QLatin1Char('k') ? 10 : unit == QLatin1Char('M') ? 20 : 30;
    return match.captured(1).toLongLong() << shift;
}

void setLog(const QCommandLineParser& parser, LogOptions* log)
{
    if (!isGiven(parser, "to"))
        refuse(QStringLiteral("--to is missing; say which file is written, for example --to log.sqlite"));
    log->to = parser.value(QStringLiteral("to"));
    const QString words = storeRefusal(log->to);
    if (!words.isEmpty())
        refuse(QStringLiteral("--to %1: %2").arg(excerpt(log->to), words));
    log->every = isGiven(parser, "every");
    log->rotation.daily = isGiven(parser, "rotate-daily");
    if (isGiven(parser, "rotate-size"))
        log->rotation.mostBytes = rotationSize(parser.value(QStringLiteral("rotate-size")));
    if (isDatabasePath(log->to) && (log->rotation.daily || log->rotation.mostBytes > 0))
        refuse(QStringLiteral(
                   "--to %1: --rotate-size and --rotate-daily cut files of CSV; a database is one file")
                   .arg(excerpt(log->to)));
}

std::optional<qint64> timeOf(const QCommandLineParser& parser, const char* option)
{
    if (!isGiven(parser, option))
        return std::nullopt;
    const QString text = parser.value(QLatin1String(option));
    const auto time = parseLocalTime(text, QDateTime::currentMSecsSinceEpoch());
    if (!time)
        refuse(
            QStringLiteral("--%1 %2: give %3").arg(QLatin1String(option), excerpt(text), localTimeWords()));
    return time;
}

Options historyOptions(const QCommandLineParser& parser)
{
    Options options;
    options.command = Command::History;
    options.format = formatOf(parser);
    HistoryOptions& history = options.history;
    const QStringList words = parser.positionalArguments();
    if (words.size() < 2)
        refuse(QStringLiteral("no file is given; plcpanel history FILE.sqlite [NAME...] is expected"));
    history.file = words.at(1);
    history.names = words.mid(2);
    history.fromMs = timeOf(parser, "from");
    history.toMs = timeOf(parser, "to");
    history.plot = isGiven(parser, "plot");
    history.csv = isGiven(parser, "csv");
    options.names = isGiven(parser, "names");
    if (history.fromMs && history.toMs && *history.fromMs >= *history.toMs)
        refuse(QStringLiteral("--from is not before --to"));
    if (int(history.plot) + int(history.csv) + int(options.names) + int(options.format == ValueFormat::Json) >
        1)
        refuse(QStringLiteral("--plot, --csv, --names and --json exclude each other"));
    if (options.names && !history.names.isEmpty())
        refuse(QStringLiteral("--names prints those of the file; leave out %1")
                   .arg(excerpt(history.names.first())));
    if (history.names.isEmpty() && (history.plot || history.csv || history.fromMs || history.toMs))
        refuse(QStringLiteral("no name is given; plcpanel history %1 prints those of the file")
                   .arg(excerpt(history.file)));
    return options;
}

Options optionsOf(const QCommandLineParser& parser, Command command)
{
    if (command == Command::History)
        return historyOptions(parser);
    Options options;
    options.command = command;
    if (command == Command::Replay)
        openCapture(parser, &options);
    else
        setLogs(parser, &options);
    options.settings = settingsOf(parser, command, capturedSettings(options));
    if (command != Command::Demo)
        options.format = formatOf(parser);
    if (command == Command::Write)
        setWriteWays(parser, &options);
    if (command == Command::Watch) {
        options.once = isGiven(parser, "once");
        options.statistics = isGiven(parser, "stats");
        options.intervalMs = numberOf(parser, "interval", 10, 3600000, options.intervalMs);
        options.part = partOf(parser);
    }
    if (command == Command::Where)
        setNames(parser, &options);
    if (command == Command::Log)
        setLog(parser, &options.log);
    const QStringList texts = parser.positionalArguments().mid(command == Command::Replay ? 2 : 1);
    if (command == Command::Scan)
        setScan(parser, texts, &options);
    else
        setVariables(texts, listOf(parser, options), &options);
    setBlockCount(parser, &options);
    return options;
}

CommandLine show(const QString& text)
{
    return {CommandLine::ShowText, {}, text};
}

CommandLine refusal(const QString& message, const QString& command)
{
    const QString help = command.isEmpty() ? QStringLiteral("plcpanel --help")
                                           : QStringLiteral("plcpanel %1 --help").arg(command);
    return {CommandLine::Refuse,
            {},
            QStringLiteral("%1\n%2 explains commands, variables and options.").arg(message, help)};
}

/// An option that only other commands take is told apart from one that there is not.
QString parseError(const QCommandLineParser& parser, Command command)
{
    for (const QString& name : parser.unknownOptionNames()) {
        const QString others = commandsWith(name);
        if (!others.isEmpty())
            return QStringLiteral("--%1 is no option of %2; it belongs to %3")
                .arg(excerpt(name), nameOf(command), others);
    }
    return excerpt(parser.errorText());
}

CommandLine parseCommand(Command command, const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(&parser, command);
    if (!parser.parse(arguments))
        return refusal(parseError(parser, command), nameOf(command));
    if (parser.isSet(QStringLiteral("help")))
        return show(helpText(command));
    try {
        return {CommandLine::Run, optionsOf(parser, command), {}};
    } catch (const std::invalid_argument& error) {
        return refusal(QString::fromStdString(error.what()), nameOf(command));
    }
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    addOptions(&parser, std::nullopt);
    if (!parser.parse(arguments))
        return refusal(excerpt(parser.errorText()), {});
    if (parser.isSet(QStringLiteral("version")))
        return show(QStringLiteral("plcpanel " PLCPANEL_VERSION "\n"));
    const QStringList words = parser.positionalArguments();
    if (words.isEmpty() && parser.isSet(QStringLiteral("help")))
        return show(helpText(std::nullopt));
    if (words.isEmpty())
        return refusal(QStringLiteral("no command is given; choose %1").arg(commandNames()), {});
    const auto command = commandNamed(words.first());
    if (!command)
        return refusal(
            QStringLiteral("\"%1\" is no command; choose %2").arg(excerpt(words.first()), commandNames()),
            {});
    return parseCommand(*command, arguments);
}

} // namespace plc
