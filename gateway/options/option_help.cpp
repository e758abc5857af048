// SPDX-License-Identifier: MIT
#include "gateway/options/option_help.h"

#include "gateway/options/option_table.h"

namespace plc
{

namespace
{

const char introduction[] =
    "Usage: plcgateway --controller HOST[:PORT] --vars FILE --broker HOST[:PORT] --format json|sparkplug "
    "[OPTIONS]\n"
    "       plcgateway --config FILE [OPTIONS]\n\n"
    "Publishes the values of a controller to an MQTT broker. What the broker has not taken yet waits on "
    "disk.\n\n"
    "Examples:\n"
    "  plcgateway --controller 192.168.0.10 --vars line1.csv --broker broker.plant.example --format json \\\n"
    "    --prefix plant/line1 --state /var/lib/plcgateway/line1\n"
    "  plcgateway --controller 127.0.0.1:1502 --vars examples/machine.csv --broker 127.0.0.1 \\\n"
    "    --format sparkplug --group plant --node line1 --state /tmp/line1\n"
    "  plcgateway --config /etc/plcgateway/line1.ini --check\n\n";

QString defaultOf(const GatewayOptionRow& row)
{
    static const GatewayOptions defaults;
    const QString name = QLatin1String(row.name);
    if (name == QLatin1String("max-block") || name == QLatin1String("stale-after"))
        return QString(); // they follow from others
    if (row.ofController)
        return QStringLiteral(" Default %1.").arg(defaults.controller.*row.ofController);
    if (row.ofBroker)
        return QStringLiteral(" Default %1.").arg(defaults.broker.*row.ofBroker);
    if (row.own && row.own != &GatewayOptions::republishSeconds)
        return QStringLiteral(" Default %1.").arg(defaults.*row.own);
    return QString();
}

} // namespace

void addGatewayOptions(QCommandLineParser* parser)
{
    parser->addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")});
    parser->addOption(
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version.")});
    for (const GatewayOptionRow& row : gatewayOptionRows()) {
        const QString help = QLatin1String(row.help) + defaultOf(row);
        if (row.value)
            parser->addOption({QLatin1String(row.name), help, QLatin1String(row.value)});
        else
            parser->addOption({QLatin1String(row.name), help});
    }
}

QString gatewayHelp()
{
    QCommandLineParser parser;
    addGatewayOptions(&parser);
    const QString text = parser.helpText();
    return QLatin1String(introduction) + text.mid(text.indexOf(QLatin1String("Options:"))) +
           QStringLiteral("\nLists have these columns, in any order:\n") + listGuide();
}

} // namespace plc
