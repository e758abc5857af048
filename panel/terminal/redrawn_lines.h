// SPDX-License-Identifier: MIT
/// \file
/// \brief Lines that are drawn again in the same place.
#ifndef PANEL_TERMINAL_REDRAWN_LINES_H
#define PANEL_TERMINAL_REDRAWN_LINES_H

#include <QString>
#include <QStringList>

namespace plc
{

/// Lines that are drawn over the ones drawn before. It leaves the cursor below them and changes no mode of
/// the terminal, so there is nothing to put back in order, however the program ends.
class RedrawnLines
{
public:
    /// \return the text that draws \a lines; each must be shorter than the terminal is wide, and all together
    ///         must be fewer than it is high
    QString draw(const QStringList& lines);

    /// The next ones are drawn below whatever the terminal shows, e.g. after the program was suspended.
    void startAnew() { m_drawn = 0; }

    /// \return the text that clears the terminal, e.g. because lines were broken when its size changed
    QString clear();

private:
    int m_drawn = 0;
};

} // namespace plc

#endif
