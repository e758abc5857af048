// SPDX-License-Identifier: MIT
/// \file
/// \brief What is shown of the watched variables, in whatever form.
#ifndef PANEL_WATCH_WATCH_VIEW_H
#define PANEL_WATCH_WATCH_VIEW_H

#include "runtime/link/link_exchange.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/station_report.h"
#include "runtime/model/variable.h"
#include "runtime/model/variable_list.h"

#include <QString>

#include <vector>

namespace plc
{

struct WatchRow {
    Variable variable;
    CyclicValue value;
    const ListedVariable* listed =
        nullptr; ///< when the variable stands in a list: its name and type, elsewhere
};

/// What a table shows.
struct WatchView {
    QString controller; ///< "HOST:PORT"
    int station = 1;
    LinkState link;
    std::vector<StationReport> stations; ///< when several may be in use
    std::vector<WatchRow> rows;
    QString heading; ///< instead of the line about controller and link, where there is no link
};

/// \return true when both tell the same apart from the ages
bool sameNews(const WatchView& a, const WatchView& b);

/// \return true when both have the same values and state
bool sameNews(const CyclicValue& a, const CyclicValue& b);

} // namespace plc

#endif
