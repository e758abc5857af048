// SPDX-License-Identifier: MIT
/// \file
/// \brief Values, states and ages of the watched variables in words.
#ifndef PANEL_WATCH_WATCH_WORDS_H
#define PANEL_WATCH_WATCH_WORDS_H

#include "panel/watch/watch_view.h"

#include <QString>

namespace plc
{

/// \return "connected for 12 s", or why there is no connection
QString linkText(const LinkState& link);

/// \return true when each of its stations has a line of its own
bool hasStationLines(const WatchView& view);

/// \return controller, station or how many of them, and linkText()
QString linkLine(const WatchView& view);

/// \return the state of a value in one word or two; "failed" as well for one that could never be read
QString stateWord(const CyclicValue& value);

/// \return true when the value was read and lies outside the limits that the list has for it
bool isOutside(const WatchRow& row);

/// \return stateText() of a row's value; of one outside its limits those too
QString stateText(const WatchRow& row);

/// \return the state of a value in words, with the reason and the return code of a failure
QString stateText(const CyclicValue& value);

/// \return an age for people: "0.3 s", "45 s", "12 min", "5 h"; "-" for a negative one
QString ageText(qint64 ms);

} // namespace plc

#endif
