/// \file
/// \brief plcpanel check: which variables of a list the controller refuses, before going live.
#ifndef PANEL_CHECK_COMMAND_H
#define PANEL_CHECK_COMMAND_H

#include "panel/command_line.h"
#include "panel/exit_status.h"
#include "panel/list_check.h"

namespace panel
{

struct ExchangeRecord;

/// Reads each block that the driver makes of the variables once, and prints what was refused.
ExitStatus runCheck(const Options& options);

/// \return what an exchange, the last try of a read, says about the elements that were asked for
ReadAnswer answerOf(const ExchangeRecord& record, const QString& failure);

} // namespace panel

#endif
