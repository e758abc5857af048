// SPDX-License-Identifier: MIT
/// \file
/// \brief Which rows of a long table are in sight, and which one is selected.
#ifndef PANEL_WATCH_ROW_WINDOW_H
#define PANEL_WATCH_ROW_WINDOW_H

namespace plc
{

/// Places are counted from 0 on, in the order in which the rows stand. The selected one is in sight after each
/// step.
class RowWindow
{
public:
    /// \param height rows in sight, at least 1
    void resize(int rows, int height);

    void step(int rows);   ///< selects another place, so many further down
    void turn(int pages);  ///< what is in sight, and the selection with it
    void scroll(int rows); ///< what is in sight; the selection stays where it can
    void select(int place);

    /// What is selected has moved to another place by itself; it stays where it is on the screen.
    void follow(int place);

    int rows() const { return m_rows; }
    int height() const { return m_height; }
    int selected() const { return m_selected; }
    int first() const { return m_first; }                                                 ///< in sight
    int end() const { return m_first + m_height < m_rows ? m_first + m_height : m_rows; } ///< behind the last

private:
    void keepInside();

    int m_rows = 0;
    int m_height = 1;
    int m_first = 0;
    int m_selected = 0;
};

} // namespace plc

#endif
