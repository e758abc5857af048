/// \file
/// \brief The watched values as a table for people.
#ifndef PANEL_WATCH_WATCH_TABLE_H
#define PANEL_WATCH_WATCH_TABLE_H

#include "runtime/link/link.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/station_report.h"
#include "runtime/model/value_text.h"
#include "runtime/model/variable.h"
#include "runtime/model/variable_list.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace plc
{

struct WatchRow {
    Variable variable;
    CyclicValue value;
    std::optional<ListedVariable> listed; ///< when the variable stands in a list: its name and type
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

/// Where it is shown.
struct TableStyle {
    int columns = 0; ///< characters of a line at most; 0: any number
    int lines = 0;   ///< lines at most; 0: any number
    bool colours = false;
    ValueFormat format = ValueFormat::Decimal;
};

/// \return the table's lines: the link, a line for each of several stations, a heading, and a row per
/// variable, more when its values need them.
///         Values that are not as the controller answered just now stand in parentheses. In a limited width
///         a long name is cut. Rows that do not fit are counted in the last line.
QStringList watchTable(const WatchView& view, const TableStyle& style);

/// \return the value of a listed variable as its type has it
QString listedText(const WatchRow& row);

/// \return "connected for 12 s", or why there is no connection
QString linkText(const LinkState& link);

/// \return the state of a value in one word or two; "failed" as well for one that could never be read
QString stateWord(const CyclicValue& value);

/// \return the state of a value in words, with the reason and the return code of a failure
QString stateText(const CyclicValue& value);

/// \return an age for people: "0.3 s", "45 s", "12 min", "5 h"; "-" for a negative one
QString ageText(qint64 ms);

/// \return true when both tell the same apart from the ages
bool sameNews(const WatchView& a, const WatchView& b);

/// \return true when both have the same values and state
bool sameNews(const CyclicValue& a, const CyclicValue& b);

} // namespace plc

#endif
