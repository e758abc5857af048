// SPDX-License-Identifier: MIT
#include "panel/drawn_screen.h"

#include <algorithm>
#include <cstdlib>

namespace test
{

namespace
{

const char escape = '\x1b';

bool isContinued(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; // of a character in UTF-8
}

} // namespace

DrawnScreen::DrawnScreen(int columns, int lines) : m_columns(columns), m_bottom(lines - 1)
{
    m_lines.assign(static_cast<std::size_t>(lines), emptyLine());
}

DrawnScreen::Line DrawnScreen::emptyLine() const
{
    return Line(static_cast<std::size_t>(m_columns), " ");
}

void DrawnScreen::resize(int columns, int lines)
{
    m_columns = columns;
    m_line = m_column = m_top = 0;
    m_bottom = lines - 1;
    m_lines.assign(static_cast<std::size_t>(lines), emptyLine());
}

void DrawnScreen::take(const std::string& bytes)
{
    for (const char byte : bytes)
        put(byte);
}

void DrawnScreen::put(char byte)
{
    if (m_sequence.empty() && byte != escape)
        return static_cast<unsigned char>(byte) < ' ' ? control(byte) : show(byte);
    m_sequence += byte;
    const bool isLong = m_sequence.size() > 1 && m_sequence[1] == '[';
    const bool hasMore = m_sequence.size() == 1 ||
                         (m_sequence.size() == 2 && std::string("[()").find(byte) != std::string::npos);
    if (hasMore || (isLong && (byte < '@' || byte > '~')))
        return;
    endSequence(byte);
    m_sequence.clear();
}

void DrawnScreen::show(char byte)
{
    if (isContinued(byte)) {
        if (m_column > 0)
            m_lines[static_cast<std::size_t>(m_line)][static_cast<std::size_t>(m_column - 1)] += byte;
        return;
    }
    m_last = std::string(1, byte);
    if (m_column >= m_columns) {
        m_column = 0;
        lineFeed();
    }
    m_lines[static_cast<std::size_t>(m_line)][static_cast<std::size_t>(m_column++)] = m_last;
}

void DrawnScreen::control(char byte)
{
    if (byte == '\r')
        m_column = 0;
    else if (byte == '\n')
        lineFeed();
    else if (byte == '\b')
        m_column = std::max(std::min(m_column, m_columns) - 1, 0);
    else if (byte == '\t')
        m_column = std::min((m_column / 8 + 1) * 8, m_columns - 1);
}

void DrawnScreen::lineFeed()
{
    if (m_line != m_bottom) {
        m_line = std::min(m_line + 1, static_cast<int>(m_lines.size()) - 1);
        return;
    }
    const int line = m_line;
    m_line = m_top;
    moveLines(m_top, -1);
    m_line = line;
}

/// Inserts lines at one, or deletes them, up to the last line that scrolls.
void DrawnScreen::moveLines(int at, int count)
{
    const auto first = m_lines.begin() + at;
    const auto end = m_lines.begin() + m_bottom + 1;
    for (int line = 0; line < std::abs(count); ++line) {
        if (count > 0) {
            std::rotate(first, end - 1, end);
            *first = emptyLine();
        } else {
            std::rotate(first, first + 1, end);
            *(end - 1) = emptyLine();
        }
    }
}

/// Inserts characters where the cursor is, or deletes them.
void DrawnScreen::shift(int count)
{
    Line& line = m_lines[static_cast<std::size_t>(m_line)];
    const auto at = line.begin() + std::min(m_column, m_columns - 1);
    for (int index = 0; index < std::abs(count); ++index) {
        if (count > 0) {
            std::rotate(at, line.end() - 1, line.end());
            *at = " ";
        } else {
            std::rotate(at, at + 1, line.end());
            line.back() = " ";
        }
    }
}

void DrawnScreen::erase(int from, int end)
{
    Line& line = m_lines[static_cast<std::size_t>(m_line)];
    for (int column = std::max(from, 0); column < std::min(end, m_columns); ++column)
        line[static_cast<std::size_t>(column)] = " ";
}

void DrawnScreen::eraseLines(int mode)
{
    const std::size_t begin = mode == 0 ? static_cast<std::size_t>(m_line) + 1 : 0;
    if (mode == 0)
        erase(m_column, m_columns);
    for (std::size_t line = begin; line < m_lines.size(); ++line)
        m_lines[line] = emptyLine();
}

/// \return a number of the sequence
int DrawnScreen::number(std::size_t index, int whenMissing) const
{
    std::size_t at = 2;
    for (; index > 0 && at != std::string::npos; --index) {
        at = m_sequence.find(';', at);
        at += at == std::string::npos ? 0 : 1;
    }
    if (at == std::string::npos)
        return whenMissing;
    const int value = std::atoi(m_sequence.c_str() + at);
    return value == 0 ? whenMissing : value;
}

void DrawnScreen::endSequence(char last)
{
    const bool isLong = m_sequence[1] == '[' && m_sequence[2] != '?';
    if (m_sequence == "\x1bM") {
        if (m_line == m_top)
            moveLines(m_top, 1);
        else
            --m_line;
    }
    if (m_sequence.find("[?1049") == 1)
        resize(m_columns, static_cast<int>(m_lines.size())); // to the other screen, or back from it
    if (isLong && !moveCursor(last, number(0, 1)) && !change(last, number(0, 1)) &&
        std::string("mlht").find(last) == std::string::npos)
        m_unknown += m_sequence.substr(1) + ' ';
}

bool DrawnScreen::moveCursor(char last, int count)
{
    const int bottom = static_cast<int>(m_lines.size()) - 1;
    switch (last) {
    case 'A':
        m_line = std::max(m_line - count, 0);
        return true;
    case 'B':
        m_line = std::min(m_line + count, bottom);
        return true;
    case 'C':
        m_column = std::min(m_column + count, m_columns - 1);
        return true;
    case 'D':
        m_column = std::max(std::min(m_column, m_columns) - count, 0);
        return true;
    case 'G':
        m_column = std::min(count, m_columns) - 1;
        return true;
    case 'd':
        m_line = std::min(count - 1, bottom);
        return true;
    case 'H':
        m_line = std::min(count - 1, bottom);
        m_column = std::min(number(1, 1), m_columns) - 1;
        return true;
    default:
        return false;
    }
}

bool DrawnScreen::change(char last, int count)
{
    switch (last) {
    case 'J':
        eraseLines(number(0, 0));
        return true;
    case 'K':
        erase(number(0, 0) == 1 ? 0 : m_column, number(0, 0) == 1 ? m_column + 1 : m_columns);
        return true;
    case 'X':
        erase(m_column, m_column + count);
        return true;
    case 'L':
    case 'M':
        moveLines(m_line, last == 'L' ? count : -count);
        return true;
    case 'S':
    case 'T':
        moveLines(m_top, last == 'T' ? count : -count);
        return true;
    case '@':
    case 'P':
        shift(last == '@' ? count : -count);
        return true;
    case 'b':
        for (int index = 0; index < count; ++index)
            show(m_last[0]);
        return true;
    case 'r':
        m_top = count - 1;
        m_bottom = number(1, static_cast<int>(m_lines.size())) - 1;
        m_line = m_column = 0;
        return true;
    default:
        return false;
    }
}

std::vector<std::string> DrawnScreen::lines() const
{
    std::vector<std::string> lines;
    for (const Line& line : m_lines) {
        std::string text;
        for (const std::string& character : line)
            text += character;
        text.erase(text.find_last_not_of(' ') + 1);
        lines.push_back(text);
    }
    return lines;
}

std::string DrawnScreen::text() const
{
    std::string text;
    for (const std::string& line : lines())
        text += line + '\n';
    return text;
}

} // namespace test
