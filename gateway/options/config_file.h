// SPDX-License-Identifier: MIT
/// \file
/// \brief The configuration file: the options of the command line, a line each.
#ifndef GATEWAY_OPTIONS_CONFIG_FILE_H
#define GATEWAY_OPTIONS_CONFIG_FILE_H

#include "gateway/options/option_table.h"

#include <QByteArray>
#include <QStringList>

namespace plc
{

struct ConfigFile {
    GivenOptions given;
    QStringList errors; ///< a message for each wrong line, with its number
};

/// Parses lines "NAME = VALUE". Blank lines, lines that begin with # or ; and the section [plcgateway] are
/// skipped; any other section, a name that is no option or there twice, and a line without = are wrong.
/// \param folder files that are named without a folder of their own lie there
ConfigFile parseConfigFile(const QByteArray& text, const QString& folder);

/// Reads and parses a file; one that cannot be read is an error.
ConfigFile readConfigFile(const QString& path);

} // namespace plc

#endif
