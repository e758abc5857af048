// SPDX-License-Identifier: MIT
/// \file
/// \brief What a person sets of the gateway, on the command line or in a file.
#ifndef GATEWAY_OPTIONS_GATEWAY_OPTIONS_H
#define GATEWAY_OPTIONS_GATEWAY_OPTIONS_H

#include "runtime/cycle/list_part.h"
#include "runtime/model/settings.h"
#include "runtime/model/variable_list.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace plc
{

enum class PayloadFormat { Json, Sparkplug };
enum class MqttVersion { V311, V5 };

struct BrokerSettings {
    QString host;
    int port = 0; ///< 0: 1883, with TLS 8883
    MqttVersion version = MqttVersion::V311;
    QString clientId; ///< empty: one that is made of the controller's name, see clientIdOf()
    int keepAliveSeconds = 30;
    QString caFile; ///< not empty: the connection is encrypted, and the broker's certificate has to fit
    QString certificateFile;
    QString keyFile;
    QString user; ///< of the login file
    QString password;
};

struct GatewayOptions {
    Settings controller;
    QString listFile;
    std::vector<ListedVariable> variables;
    BrokerSettings broker;
    PayloadFormat format = PayloadFormat::Json;

    QString prefix; ///< json: what topics begin with

    QString group; ///< sparkplug
    QString node;
    QString device; ///< what the names of devices begin with; the station's number follows
    QString primaryHost;

    int republishSeconds = 0; ///< 0: values are published when they change, and not else
    int figuresSeconds = 10;
    QString stateDirectory; ///< where the spool lies, and what has to be known after a restart
    int spoolMegabytes = 256;
    int spoolHours = 168;
    bool allowWrites = false;
    bool checkOnly = false;
    ListPart part; ///< of the list: which block reads are this process's
};

struct GatewayLine {
    enum Wish { Run, ShowText, ShowStatus, Refuse };
    Wish wish = Run;
    GatewayOptions options;
    QStringList names;   ///< of gateways that are asked for their status; none: all
    bool isJson = false; ///< in which form it is shown
    QString text;        ///< help or version to show, or what is wrong and what to do
};

/// Reads the arguments, the program's name first, the configuration file that they name, and the list of
/// variables. What is said on the command line goes before what the file says. Needs a QCoreApplication.
GatewayLine parseGatewayLine(const QStringList& arguments);

/// \return one that no other gateway of a plant has, as long as their controllers and their formats differ
QString clientIdOf(const GatewayOptions& options);

/// \return the port of the broker that is meant
int brokerPort(const BrokerSettings& broker);

} // namespace plc

#endif
