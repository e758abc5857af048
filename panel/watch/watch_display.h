// SPDX-License-Identifier: MIT
/// \file
/// \brief The ways in which plcpanel watch shows values.
#ifndef PANEL_WATCH_WATCH_DISPLAY_H
#define PANEL_WATCH_WATCH_DISPLAY_H

#include "panel/watch/watch_table.h"
#include "runtime/cycle/runtime.h"

#include <memory>
#include <optional>

namespace plc
{

struct WatchReport {
    WatchView view;
    std::optional<Statistics> statistics; ///< when the user wants them
    QString prompt;                       ///< what can be typed, or what is being typed
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
    virtual bool redraws() const { return false; }   ///< whatever it shows is replaced by the next report
    virtual void resized() {}                        ///< the terminal has another size
    virtual void continued() {}                      ///< the program was suspended
};

/// \return lines of JSON; a table that is redrawn in a terminal; tables one below the other elsewhere
std::unique_ptr<Display> displayFor(const DisplayWishes& wishes);

} // namespace plc

#endif
