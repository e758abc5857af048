/// \file
/// \brief plcpanel read: prints values.
#ifndef PANEL_READ_COMMAND_H
#define PANEL_READ_COMMAND_H

#include "panel/command_line.h"
#include "panel/exit_status.h"
#include "panel/outcome.h"

namespace panel
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

} // namespace panel

#endif
