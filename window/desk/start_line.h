// SPDX-License-Identifier: MIT
/// \file
/// \brief What is typed behind plcwindow: the options of plcpanel watch, or nothing.
#ifndef WINDOW_DESK_START_LINE_H
#define WINDOW_DESK_START_LINE_H

#include "window/session/source.h"

#include <QStringList>

#include <optional>

namespace plc
{

struct StartLine {
    enum Wish { Run, ShowText, Refuse };
    Wish wish = Run;
    QString text;                   ///< to show, or what is wrong and what to do
    std::optional<Watched> watched; ///< nothing: the window asks
};

/// \param arguments the program's name first. Needs a QCoreApplication.
StartLine parseStartLine(const QStringList& arguments);

/// \return true when the environment or the arguments name a display; without one Qt ends the program
bool hasDisplay(const QStringList& arguments);

} // namespace plc

#endif
