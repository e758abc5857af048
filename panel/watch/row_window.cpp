// SPDX-License-Identifier: MIT
#include "panel/watch/row_window.h"

#include <algorithm>

namespace plc
{

namespace
{

int within(int value, int least, int most)
{
    return std::max(least, std::min(value, most));
}

} // namespace

void RowWindow::resize(int rows, int height)
{
    m_rows = rows;
    m_height = std::max(height, 1);
    keepInside();
}

void RowWindow::step(int rows)
{
    select(m_selected + rows);
}

void RowWindow::turn(int pages)
{
    m_first = within(m_first + pages * m_height, 0, std::max(m_rows - m_height, 0));
    m_selected += pages * m_height;
    keepInside();
}

void RowWindow::follow(int place)
{
    m_first += place - m_selected;
    m_selected = place;
    keepInside();
}

void RowWindow::select(int place)
{
    m_selected = place;
    keepInside();
}

void RowWindow::scroll(int rows)
{
    m_first = within(m_first + rows, 0, std::max(m_rows - m_height, 0));
    m_selected = within(m_selected, m_first, std::max(end() - 1, m_first));
}

void RowWindow::keepInside()
{
    m_selected = within(m_selected, 0, std::max(m_rows - 1, 0));
    m_first = within(m_first, m_selected - m_height + 1, m_selected);
    m_first = within(m_first, 0, std::max(m_rows - m_height, 0));
}

} // namespace plc
