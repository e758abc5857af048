/// \file
/// \brief plcpanel read: prints values.
#ifndef PANEL_COMMANDS_READ_COMMAND_H
#define PANEL_COMMANDS_READ_COMMAND_H

#include "panel/commands/command_line.h"
#include "panel/commands/exit_status.h"
#include "runtime/model/outcome.h"

namespace plc
{

/// Reads the variables one after the other; when the controller cannot be reached, the rest is not tried.
/// \throws std::runtime_error when the driver cannot be loaded
ExitStatus runRead(const Options& options);

/// \return the line that tells how \a variable was read, without the line's end
/// \param width the name is filled up to it
QString readLine(const Variable& variable, const ReadOutcome& outcome, ValueFormat format, int width);

/// \return the line of JSON that tells it
QString readJson(const Variable& variable, int station, const ReadOutcome& outcome);

/// \return the length of the longest name of \a variables
int widestName(const std::vector<Variable>& variables);

} // namespace plc

#endif
