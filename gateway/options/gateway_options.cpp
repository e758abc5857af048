// SPDX-License-Identifier: MIT
#include "gateway/options/gateway_options.h"

#include "gateway/options/config_file.h"
#include "gateway/options/option_help.h"
#include "gateway/options/option_table.h"
#include "gateway/options/secret_file.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/printable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <stdexcept>

namespace plc
{

namespace
{

const int defaultControllerPort = 502;
const int plainBrokerPort = 1883;
const int encryptedBrokerPort = 8883;
const int lastPort = 65535;
const qint64 mostCertificateBytes = 16 << 20; // all authorities of a system take a tenth of it

[[noreturn]] void refuse(const QString& message)
{
    throw std::invalid_argument(message.toStdString());
}

QString given(const GivenOptions& options, const char* name)
{
    return options.value(QLatin1String(name));
}

bool isOn(const GivenOptions& options, const char* name)
{
    return given(options, name) == QLatin1String("yes");
}

QString needed(const GivenOptions& options, const char* name)
{
    const GatewayOptionRow* row = gatewayOptionRow(QLatin1String(name));
    const QString value = given(options, name);
    if (value.isEmpty())
        refuse(QStringLiteral("--%1 is missing; for example --%1 %2")
                   .arg(QLatin1String(name), QLatin1String(row->example)));
    return value;
}

/// Splits "HOST[:PORT]"; an address with colons of its own stands in brackets when a port follows.
void splitAddress(const char* option, const QString& text, QString* host, int* port)
{
    const int bracket = text.indexOf(QLatin1Char(']'));
    const bool manyColons = text.count(QLatin1Char(':')) > 1;
    const int colon = text.indexOf(QLatin1Char(':'), bracket < 0 ? 0 : bracket);
    const bool hasPort = colon >= 0 && (bracket >= 0 || !manyColons);
    *host = hasPort ? text.left(colon) : text;
    host->remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    bool isNumber = true;
    if (hasPort)
        *port = text.mid(colon + 1).toInt(&isNumber);
    if (host->isEmpty() || !isNumber || (hasPort && (*port < 1 || *port > lastPort)))
        refuse(QStringLiteral("--%1 %2: give a name or address, and after a colon a port from 1 to 65535")
                   .arg(QLatin1String(option), excerpt(text)));
}

int numberOf(const GatewayOptionRow& row, const QString& text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || number < row.least || number > row.most)
        refuse(QStringLiteral("--%1 %2: give a number from %3 to %4")
                   .arg(QLatin1String(row.name), excerpt(text))
                   .arg(row.least)
                   .arg(row.most));
    return number;
}

void setNumbers(const GivenOptions& options, GatewayOptions* result)
{
    for (const GatewayOptionRow& row : gatewayOptionRows()) {
        const QString value = options.value(QLatin1String(row.name));
        if (row.kind != OptionKind::Number || value.isEmpty())
            continue;
        const int number = numberOf(row, value);
        if (row.ofController)
            result->controller.*row.ofController = number;
        else if (row.ofBroker)
            result->broker.*row.ofBroker = number;
        else
            result->*row.own = number;
    }
    // A value that is refreshed seldom is not stale before its next refresh is late.
    if (given(options, "stale-after").isEmpty())
        result->controller.staleAfterMs += result->controller.pollMs;
}

void setController(const GivenOptions& options, Settings* settings)
{
    settings->port = defaultControllerPort;
    splitAddress("controller", needed(options, "controller"), &settings->host, &settings->port);
    settings->multiStation = isOn(options, "multi-station");
    settings->remoteMode = isOn(options, "remote");
    settings->driverPath = given(options, "driver");
}

/// \return why the file cannot be one of certificates as the TLS library reads them; empty when it can
QString certificateRefusal(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be read");
    static const QRegularExpression begin(QStringLiteral("^-----BEGIN (X509 |TRUSTED )?CERTIFICATE-----"),
                                          QRegularExpression::MultilineOption);
    if (!begin.match(QString::fromLatin1(file.read(mostCertificateBytes))).hasMatch())
        return QStringLiteral(
            "holds no PEM certificate; give a file with a line -----BEGIN CERTIFICATE-----");
    return QString();
}

void setTls(const GivenOptions& options, BrokerSettings* broker)
{
    broker->caFile = given(options, "ca");
    broker->certificateFile = given(options, "cert");
    broker->keyFile = given(options, "key");
    if (broker->certificateFile.isEmpty() != broker->keyFile.isEmpty())
        refuse(QStringLiteral("--cert and --key belong together: give both or none"));
    if (!broker->certificateFile.isEmpty() && broker->caFile.isEmpty())
        refuse(QStringLiteral("--cert takes --ca: whose certificate of the broker is to be trusted?"));
    for (const char* option : {"ca", "cert"}) {
        const QString path = given(options, option);
        const QString words = path.isEmpty() ? QString() : certificateRefusal(path);
        if (!words.isEmpty())
            refuse(QStringLiteral("--%1 %2: %3").arg(QLatin1String(option), excerpt(path), words));
    }
    const QString words = broker->keyFile.isEmpty() ? QString() : secretFileRefusal(broker->keyFile);
    if (!words.isEmpty())
        refuse(QStringLiteral("--key %1: %2").arg(excerpt(broker->keyFile), words));
}

void setBroker(const GivenOptions& options, BrokerSettings* broker)
{
    splitAddress("broker", needed(options, "broker"), &broker->host, &broker->port);
    const QString version = given(options, "mqtt");
    if (!version.isEmpty() && version != QLatin1String("3.1.1") && version != QLatin1String("5"))
        refuse(QStringLiteral("--mqtt %1: give 3.1.1 or 5").arg(excerpt(version)));
    broker->version = version == QLatin1String("5") ? MqttVersion::V5 : MqttVersion::V311;
    broker->clientId = given(options, "client-id");
    setTls(options, broker);
    if (given(options, "login").isEmpty())
        return;
    const Login login = readLogin(given(options, "login"));
    if (!login.error.isEmpty())
        refuse(QStringLiteral("--login %1: %2").arg(excerpt(given(options, "login")), login.error));
    broker->user = login.user;
    broker->password = login.password;
}

/// \return true when MQTT takes \a text, also with what is put before and behind it
bool isMqttText(const QString& text)
{
    const int mostBytes = 1000;
    return text.toUtf8().size() <= mostBytes && printable(text) == text;
}

/// \return true when MQTT takes \a text in a topic, and it is for no filter
bool isTopicText(const QString& text)
{
    return !text.isEmpty() && isMqttText(text) && !text.contains(QLatin1Char('+')) &&
           !text.contains(QLatin1Char('#'));
}

/// What libmosquitto would not take would end the program each time that it is started.
void refuseNoText(const GivenOptions& options)
{
    for (const char* name : {"client-id", "prefix", "group", "node", "device", "primary-host"}) {
        const QString text = given(options, name);
        if (!isMqttText(text))
            refuse(QStringLiteral("--%1 %2: at most 1000 bytes are expected, and no control characters")
                       .arg(QLatin1String(name), excerpt(text)));
    }
}

QString sparkplugName(const char* option, const QString& value)
{
    if (!isTopicText(value) || value.contains(QLatin1Char('/')))
        refuse(QStringLiteral("--%1 %2: a name without + / and # is expected")
                   .arg(QLatin1String(option), excerpt(value)));
    return value;
}

void setSparkplug(const GivenOptions& options, GatewayOptions* result)
{
    result->group = sparkplugName("group", needed(options, "group"));
    result->node = sparkplugName("node", needed(options, "node"));
    const QString device = given(options, "device");
    result->device = device.isEmpty() ? QStringLiteral("station") : sparkplugName("device", device);
    const QString host = given(options, "primary-host");
    if (!host.isEmpty())
        result->primaryHost = sparkplugName("primary-host", host);
}

void refuseOfOther(const GivenOptions& options, const char* format, std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        if (!given(options, name).isEmpty())
            refuse(QStringLiteral("--%1 belongs to --format %2")
                       .arg(QLatin1String(name), QLatin1String(format)));
    }
}

void setPart(const GivenOptions& options, GatewayOptions* result)
{
    const QString text = given(options, "part");
    if (text.isEmpty())
        return;
    QString error;
    const std::optional<ListPart> part = parseListPart(text, &error);
    if (!part)
        refuse(QStringLiteral("--part: ") + error);
    result->part = *part;
}

/// No two parts of a list have the same.
QString defaultPrefix(const GatewayOptions& options)
{
    const QString prefix = QStringLiteral("plc/") + options.controller.host;
    return options.part.parts == 1 ? prefix : prefix + QStringLiteral("/%1").arg(options.part.number);
}

void setJson(const GivenOptions& options, GatewayOptions* result)
{
    result->prefix = given(options, "prefix");
    if (result->prefix.isEmpty())
        result->prefix = defaultPrefix(*result);
    const bool isLevelled = !result->prefix.startsWith(QLatin1Char('/')) &&
                            !result->prefix.endsWith(QLatin1Char('/')) &&
                            !result->prefix.startsWith(QLatin1Char('$'));
    if (!isTopicText(result->prefix) || !isLevelled)
        refuse(QStringLiteral("--prefix %1: a topic without + and # is expected that neither begins nor ends "
                              "with / and does not begin with $")
                   .arg(excerpt(result->prefix)));
}

void setFormat(const GivenOptions& options, GatewayOptions* result)
{
    const QString format = needed(options, "format");
    if (format != QLatin1String("json") && format != QLatin1String("sparkplug"))
        refuse(QStringLiteral("--format %1: give json or sparkplug").arg(excerpt(format)));
    result->format = format == QLatin1String("json") ? PayloadFormat::Json : PayloadFormat::Sparkplug;
    if (result->format == PayloadFormat::Json) {
        refuseOfOther(options, "sparkplug", {"group", "node", "device", "primary-host"});
        setJson(options, result);
    } else {
        refuseOfOther(options, "json", {"prefix"});
        setSparkplug(options, result);
    }
}

/// Makes nothing: a check leaves no folder behind.
/// \return why no state can lie in the folder; empty when nothing is against it
QString stateRefusal(const QString& path)
{
    QFileInfo nearest(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    const bool exists = nearest.exists();
    while (!nearest.exists() && !nearest.isRoot())
        nearest.setFile(nearest.path());
    const QString shown = excerpt(nearest.filePath());
    if (!nearest.isDir())
        return QStringLiteral("%1 is a file; give a folder").arg(shown);
    if (!exists && !nearest.isWritable())
        return QStringLiteral(
                   "cannot be made: this user may not write in %1; make the folder, or give another")
            .arg(shown);
    return QString();
}

void setState(const GivenOptions& options, GatewayOptions* result)
{
    result->stateDirectory = given(options, "state");
    if (result->stateDirectory.isEmpty())
        result->stateDirectory = QString::fromLocal8Bit(qgetenv("STATE_DIRECTORY"));
    if (result->stateDirectory.isEmpty())
        needed(options, "state");
    const QString words = stateRefusal(result->stateDirectory);
    if (!words.isEmpty())
        refuse(QStringLiteral("--state %1: %2").arg(excerpt(result->stateDirectory), words));
}

/// A list with one wrong line is not used at all.
void setList(const GivenOptions& options, GatewayOptions* result)
{
    const QString path = needed(options, "vars");
    const Settings& settings = result->controller;
    VariableList list = readVariableList(path, [&settings](const ListedVariable& variable) {
        return cyclicRefusal(withStation(variable.elements, settings), settings);
    });
    QString text =
        QStringLiteral("--vars %1: nothing is published until this is put right:").arg(excerpt(path));
    for (const QString& error : list.errors)
        text += QStringLiteral("\n%1: %2").arg(excerpt(path), error);
    if (!list.errors.isEmpty())
        refuse(text);
    if (list.variables.empty())
        refuse(QStringLiteral("--vars %1: the list holds no variable").arg(excerpt(path)));
    result->listFile = path;
    result->variables = std::move(list.variables);
}

/// Chooses the longest requests that Modbus allows for the variables, or refuses a choice that breaks a limit.
void setBlockCount(const GivenOptions& options, GatewayOptions* result)
{
    std::vector<Variable> variables;
    for (const ListedVariable& listed : result->variables)
        variables.push_back(listed.elements);
    Settings& settings = result->controller;
    if (given(options, "max-block").isEmpty())
        settings.maxBlockCount = blockCountFor(variables);
    const QString words = blockRefusal(variables, settings.maxBlockCount);
    if (!words.isEmpty())
        refuse(QStringLiteral("--max-block %1: %2").arg(settings.maxBlockCount).arg(words));
}

GatewayOptions optionsOf(const GivenOptions& options)
{
    GatewayOptions result;
    setController(options, &result.controller);
    refuseNoText(options);
    setBroker(options, &result.broker);
    setPart(options, &result);
    setFormat(options, &result);
    setNumbers(options, &result);
    setState(options, &result);
    setList(options, &result);
    setBlockCount(options, &result);
    result.allowWrites = isOn(options, "allow-writes");
    result.checkOnly = isOn(options, "check");
    return result;
}

GatewayLine statusWish(const QCommandLineParser& parser)
{
    GatewayLine line;
    line.wish = GatewayLine::ShowStatus;
    line.names = parser.positionalArguments();
    line.isJson = parser.isSet(QStringLiteral("json"));
    return line;
}

GivenOptions givenOnLine(const QCommandLineParser& parser)
{
    GivenOptions options;
    for (const GatewayOptionRow& row : gatewayOptionRows()) {
        const QString name = QLatin1String(row.name);
        if (!parser.isSet(name))
            continue;
        const QString value = row.value ? parser.value(name) : QStringLiteral("yes");
        if (value.isEmpty())
            refuse(QStringLiteral("--%1 has no value; for example --%1 %2")
                       .arg(name, QLatin1String(row.example)));
        options.insert(name, value);
    }
    return options;
}

GivenOptions withConfig(GivenOptions onLine)
{
    const QString path = given(onLine, "config");
    if (path.isEmpty())
        return onLine;
    const ConfigFile config = readConfigFile(path);
    if (!config.errors.isEmpty()) {
        QString text;
        for (const QString& error : config.errors)
            text += QStringLiteral("%1%2: %3").arg(text.isEmpty() ? "" : "\n", excerpt(path), error);
        refuse(text);
    }
    for (auto pair = config.given.begin(); pair != config.given.end(); ++pair) {
        if (!onLine.contains(pair.key()))
            onLine.insert(pair.key(), pair.value());
    }
    return onLine;
}

GatewayLine spoken(GatewayLine::Wish wish, const QString& text)
{
    GatewayLine line;
    line.wish = wish;
    line.text = text;
    return line;
}

GatewayLine refusal(const QString& message)
{
    return spoken(GatewayLine::Refuse, message + QStringLiteral("\nplcgateway --help explains the options."));
}

} // namespace

GatewayLine parseGatewayLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    addGatewayOptions(&parser);
    if (!parser.parse(arguments))
        return refusal(excerpt(parser.errorText()));
    if (parser.isSet(QStringLiteral("version")))
        return spoken(GatewayLine::ShowText, QStringLiteral("plcgateway " PLCGATEWAY_VERSION "\n"));
    if (parser.isSet(QStringLiteral("help")))
        return spoken(GatewayLine::ShowText, gatewayHelp());
    if (parser.isSet(QStringLiteral("status")))
        return statusWish(parser);
    if (parser.isSet(QStringLiteral("json")))
        return refusal(
            QStringLiteral("--json says how --status is shown; what is published is --format json"));
    if (!parser.positionalArguments().isEmpty())
        return refusal(QStringLiteral("\"%1\" is no option; all of them begin with --")
                           .arg(excerpt(parser.positionalArguments().first())));
    try {
        GatewayLine line;
        line.options = optionsOf(withConfig(givenOnLine(parser)));
        return line;
    } catch (const std::invalid_argument& error) {
        return refusal(QString::fromStdString(error.what()));
    }
}

QString clientIdOf(const GatewayOptions& options)
{
    if (!options.broker.clientId.isEmpty())
        return options.broker.clientId;
    const QString name = options.format == PayloadFormat::Json
                             ? options.prefix
                             : options.group + QLatin1Char('/') + options.node;
    return QStringLiteral("plcgateway-") + name;
}

int brokerPort(const BrokerSettings& broker)
{
    if (broker.port != 0)
        return broker.port;
    return broker.caFile.isEmpty() ? plainBrokerPort : encryptedBrokerPort;
}

} // namespace plc
