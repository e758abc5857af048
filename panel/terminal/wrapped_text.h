// SPDX-License-Identifier: MIT
/// \file
/// \brief Texts in lines of limited width.
#ifndef PANEL_TERMINAL_WRAPPED_TEXT_H
#define PANEL_TERMINAL_WRAPPED_TEXT_H

#include <QStringList>

namespace plc
{

/// Joins \a texts with spaces into lines of \a width columns at most, as far as a single one fits.
QStringList wrapped(const QStringList& texts, int width);

/// \return \a text in pieces of \a width columns, the last one shorter; an empty text is one piece
QStringList chopped(const QString& text, int width);

} // namespace plc

#endif
