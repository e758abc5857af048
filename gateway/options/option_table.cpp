// SPDX-License-Identifier: MIT
#include "gateway/options/option_table.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

GatewayOptionRow text(const char* name, const char* value, const char* help, const char* example)
{
    return {name, value, OptionKind::Text, help, example};
}

GatewayOptionRow file(const char* name, const char* help, const char* example)
{
    return {name, "FILE", OptionKind::File, help, example};
}

GatewayOptionRow flag(const char* name, const char* help)
{
    return {name, nullptr, OptionKind::Switch, help, "yes"};
}

template <class Member>
GatewayOptionRow number(const char* name, const char* value, Member member, int least, int most,
                        const char* help, const char* example)
{
    GatewayOptionRow row = {name, value, OptionKind::Number, help, example};
    if constexpr (std::is_same_v<Member, int Settings::*>)
        row.ofController = member;
    else if constexpr (std::is_same_v<Member, int BrokerSettings::*>)
        row.ofBroker = member;
    else
        row.own = member;
    row.least = least;
    row.most = most;
    return row;
}

void addControllerRows(std::vector<GatewayOptionRow>* rows)
{
    rows->insert(
        rows->end(),
        {text("controller", "HOST[:PORT]",
              "The controller's name or address, and its TCP port when that is not 502. Needed.",
              "192.168.0.10:502"),
         file("vars", "The list of variables to publish, the CSV file of plcpanel. Needed.", "line1.csv"),
         number("station", "N", &Settings::station, 0, lastStation,
                "The station (Modbus unit) of every variable that names none.", "1"),
         flag("multi-station", "Several stations share the link; the list names each variable's own."),
         flag("remote", "Speak remote frames instead of Modbus TCP."),
         number("poll", "MS", &Settings::pollMs, 0, 3500000,
                "Begin a refresh of all variables every so many milliseconds at most; 0: as fast as it goes.",
                "250"),
         number("gap", "MS", &Settings::gapMs, 0, 60000,
                "Pause so many milliseconds before each further request, for slow controllers.", "5"),
         number("timeout", "MS", &Settings::timeoutMs, 1, 60000, "Wait so many milliseconds for a reply.",
                "500"),
         number("retries", "N", &Settings::retryLimit, 0, 1000,
                "Try a request again so many times before giving it up.", "2"),
         number("max-block", "N", &Settings::maxBlockCount, smallestBlockCount, largestBlockCount,
                "Words in one request at most; default is what Modbus allows for the variables.", "100"),
         number("stale-after", "MS", &Settings::staleAfterMs, 1, 3600000,
                "A value that was not refreshed for so many milliseconds is stale; default is 2000 more than "
                "--poll.",
                "5000"),
         text("part", "K/N",
              "Publish only the variables of each Nth block read, from the Kth on. Several processes share "
              "the list "
              "of one slow controller so, each with a connection, a --state and a --prefix or --node of its "
              "own.",
              "1/4"),
         file("driver",
              "The driver library; default is libplcdriver.so beside this program, one directory up, or "
              "where the system looks for libraries.",
              "/opt/panel/libplcdriver.so")});
}

void addBrokerRows(std::vector<GatewayOptionRow>* rows)
{
    rows->insert(
        rows->end(),
        {text("broker", "HOST[:PORT]",
              "The MQTT broker's name or address, and its port when that is not 1883 (with --ca 8883). "
              "Needed.",
              "broker.plant.example"),
         text("mqtt", "VERSION", "The version of MQTT: 3.1.1 or 5; default 3.1.1.", "5"),
         text("client-id", "TEXT", "How the broker knows this client; default is made of the controller.",
              "gateway-line1"),
         number("keep-alive", "S", &BrokerSettings::keepAliveSeconds, 5, 3600,
                "A broker that is silent for so many seconds is given up, and the broker does the same.",
                "10"),
         file("ca",
              "Encrypt, and take only a broker whose certificate one of this file's authorities has signed "
              "for the name that --broker says.",
              "/etc/ssl/plant-ca.crt"),
         file("cert", "The certificate that the broker knows this client by; takes --ca and --key.",
              "line1.crt"),
         file("key", "The certificate's key, which nobody else may be able to read.", "line1.key"),
         file(
             "login",
             "User and password, on a line each, in a file that nobody else may be able to read (chmod 600).",
             "line1.login")});
}

void addFormatRows(std::vector<GatewayOptionRow>* rows)
{
    rows->insert(
        rows->end(),
        {text("format", "FORMAT", "json, a retained topic for each variable, or sparkplug. Needed.", "json"),
         text("prefix", "TOPIC",
              "json: what every topic begins with; default plc/ and the controller's name.", "plant/line1"),
         text("group", "NAME", "sparkplug: the group. Needed for it.", "plant"),
         text("node", "NAME", "sparkplug: the edge node, unique in its group. Needed for it.", "line1"),
         text("device", "NAME",
              "sparkplug: what a device is called; the number of its station follows. Default station.",
              "drive"),
         text("primary-host", "NAME",
              "sparkplug: the host application without which nothing is published; values wait for it.",
              "scada"),
         number("republish", "S", &GatewayOptions::republishSeconds, 0, 86400,
                "Publish a value that did not change again after so many seconds; default 0: never.", "60"),
         number("figures", "S", &GatewayOptions::figuresSeconds, 1, 3600,
                "Publish the gateway's own figures every so many seconds.", "30"),
         text("state", "DIRECTORY",
              "Where what waits for the broker lies, and what has to be known after a restart; default is "
              "$STATE_DIRECTORY, which systemd sets. Needed without it.",
              "/var/lib/plcgateway/line1"),
         number("spool-size", "MB", &GatewayOptions::spoolMegabytes, 1, 100000,
                "What waits takes at most so many megabytes; then the oldest goes.", "1024"),
         number("spool-age", "HOURS", &GatewayOptions::spoolHours, 1, 87600,
                "What has waited for so many hours goes.", "72"),
         flag("allow-writes",
              "Let the broker's clients write the variables to which the list gives the access rw. Without "
              "it nobody writes anything."),
         flag("check", "Read configuration, list and files, say what is wrong with them, and end.")});
    rows->back().onlyOnLine = true;
    rows->push_back(flag("status",
                         "Say how running gateways are, and end: those that are named (plcgateway --status "
                         "line1), by systemd's instance or by the folder of their --state; or all that "
                         "systemd started."));
    rows->back().onlyOnLine = true;
    rows->push_back(flag("json", "With --status: a JSON object a line."));
    rows->back().onlyOnLine = true;
}

std::vector<GatewayOptionRow> makeRows()
{
    std::vector<GatewayOptionRow> rows;
    addControllerRows(&rows);
    addBrokerRows(&rows);
    addFormatRows(&rows);
    rows.push_back(file("config",
                        "Read options from this file: a line NAME = VALUE for each, the names being those of "
                        "the options. The command line goes before it.",
                        "/etc/plcgateway/line1.ini"));
    rows.back().onlyOnLine = true;
    return rows;
}

} // namespace

const std::vector<GatewayOptionRow>& gatewayOptionRows()
{
    static const std::vector<GatewayOptionRow> rows = makeRows();
    return rows;
}

const GatewayOptionRow* gatewayOptionRow(const QString& name)
{
    for (const GatewayOptionRow& row : gatewayOptionRows()) {
        if (name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

} // namespace plc
