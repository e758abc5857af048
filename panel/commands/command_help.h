// SPDX-License-Identifier: MIT
/// \file
/// \brief The options of each command, and the texts that explain them.
#ifndef PANEL_COMMANDS_COMMAND_HELP_H
#define PANEL_COMMANDS_COMMAND_HELP_H

#include "panel/commands/command_line.h"

#include <QCommandLineParser>

#include <optional>

namespace plc
{

/// \return "read", "write", ...
QString nameOf(Command command);

/// \return nothing when there is no such command
std::optional<Command> commandNamed(const QString& name);

/// \return all of them, "read, write, ... or demo"
QString commandNames();

/// Adds the options that \a command takes; for none those of every command.
void addOptions(QCommandLineParser* parser, std::optional<Command> command);

/// \return the names of the commands that take \a option, "read, write and watch"; empty when none does
QString commandsWith(const QString& option);

/// \return the help for \a command; for none that of the program. Needs a QCoreApplication.
QString helpText(std::optional<Command> command);

} // namespace plc

#endif
