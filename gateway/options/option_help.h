// SPDX-License-Identifier: MIT
/// \file
/// \brief The options of the command line, and the text that explains them.
#ifndef GATEWAY_OPTIONS_OPTION_HELP_H
#define GATEWAY_OPTIONS_OPTION_HELP_H

#include <QCommandLineParser>

namespace plc
{

void addGatewayOptions(QCommandLineParser* parser);

/// Needs a QCoreApplication.
QString gatewayHelp();

} // namespace plc

#endif
