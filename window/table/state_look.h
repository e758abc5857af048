// SPDX-License-Identifier: MIT
/// \file
/// \brief How states look: words, a shape and a colour each, so that nobody needs to tell colours apart.
#ifndef WINDOW_TABLE_STATE_LOOK_H
#define WINDOW_TABLE_STATE_LOOK_H

#include "runtime/model/cyclic_value.h"

#include <QColor>
#include <QString>

class QPainter;
class QPalette;
class QRect;

namespace plc
{

/// From good to bad: what is worst comes first in the table.
enum class Look { Fresh, Waiting, Stale, Outside, Off, Failed };

/// \param outside its limits
Look lookOf(ValueState state, bool hasFailed, bool outside);

/// \return "fresh", "out of range", ...
QString lookWord(Look look);

/// Of a set that is told apart with any kind of colour blindness, in a lightness that suits the background.
QColor lookColour(Look look, const QPalette& palette);

/// A filled disc, a half one, a triangle, a cross ...: each look has its own.
void drawLook(QPainter* painter, const QRect& where, Look look, const QColor& colour);

/// \return true for a dark background
bool isDark(const QPalette& palette);

/// \return an age for people: "0.3 s", "45 s", "12 min", "5 h"; empty for a negative one
QString ageWords(qint64 ms);

} // namespace plc

#endif
