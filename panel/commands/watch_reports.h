// SPDX-License-Identifier: MIT
/// \file
/// \brief What plcpanel watch asks of its runtime.
#ifndef PANEL_COMMANDS_WATCH_REPORTS_H
#define PANEL_COMMANDS_WATCH_REPORTS_H

#include "panel/commands/command_line.h"
#include "panel/watch/watch_display.h"
#include "runtime/cycle/runtime.h"

namespace plc
{

/// Adds what is watched, in the order of WatchedVariables and of the rows of a report.
void addCyclic(const Options& options, Runtime* runtime);

/// \return how the link and the stations are, and the statistics where they are wanted; no rows
WatchReport reportOfLink(const Options& options, const Runtime& runtime);

/// \param variables of \a options; they and \a runtime must outlive the report
/// \return the same, with where the rows have their values from
WatchReport reportOf(const Options& options, const WatchedVariables& variables, const Runtime& runtime);

} // namespace plc

#endif
