// SPDX-License-Identifier: MIT
/// \file
/// \brief Every option of the gateway, a row each: the words of the command line and of the configuration file.
#ifndef GATEWAY_OPTIONS_OPTION_TABLE_H
#define GATEWAY_OPTIONS_OPTION_TABLE_H

#include "gateway/options/gateway_options.h"

#include <QMap>
#include <QString>

#include <vector>

namespace plc
{

enum class OptionKind {
    Text,
    File,   ///< in a configuration file relative to its folder
    Switch, ///< in a configuration file yes or no
    Number
};

struct GatewayOptionRow {
    const char* name;
    const char* value; ///< what help calls it; null for a switch
    OptionKind kind;
    const char* help;
    const char* example; ///< a value, as the manual shows it
    bool onlyOnLine = false;

    // Of numbers: where it goes, and what fits. One of the three is not null.
    int Settings::*ofController = nullptr;
    int GatewayOptions::*own = nullptr;
    int BrokerSettings::*ofBroker = nullptr;
    int least = 0;
    int most = 0;
};

const std::vector<GatewayOptionRow>& gatewayOptionRows();

/// \return null when there is none
const GatewayOptionRow* gatewayOptionRow(const QString& name);

/// What was given, by the option's name; of a switch "yes" or "no".
using GivenOptions = QMap<QString, QString>;

} // namespace plc

#endif
