// SPDX-License-Identifier: MIT
/// \file
/// \brief The ways in which plcpanel watch shows values that are not drawn over.
#ifndef PANEL_WATCH_WATCH_DISPLAY_H
#define PANEL_WATCH_WATCH_DISPLAY_H

#include "panel/watch/row_source.h"
#include "panel/watch/watch_table.h"
#include "runtime/cycle/runtime.h"

#include <memory>
#include <optional>

namespace plc
{

struct WatchReport {
    WatchView view; ///< without rows
    RowSource rows;
    std::optional<Statistics> statistics; ///< when the user wants them
};

/// What a user asked for that decides how values are shown.
struct DisplayWishes {
    ValueFormat format = ValueFormat::Decimal;
    bool once = false;  ///< one report and the end
    bool trace = false; ///< frames in words go to standard error meanwhile
};

class Display
{
public:
    virtual ~Display() = default;
    virtual void show(const WatchReport& report) = 0;
    virtual void end(const WatchReport& report) = 0; ///< the last report, which may have been shown before
};

/// \return true when the values are to be shown by a LiveTable, which takes a whole terminal
bool wantsScreen(const DisplayWishes& wishes);

/// \return lines of JSON, or tables one below the other
std::unique_ptr<Display> displayFor(const DisplayWishes& wishes);

/// Prints what a screen showed in the end, for whoever looks up what it was: as much as the window holds.
void printLastTable(const WatchReport& report, ValueFormat format);

} // namespace plc

#endif
