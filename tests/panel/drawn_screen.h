// SPDX-License-Identifier: MIT
// What a terminal shows of the bytes that it gets, as far as "xterm" is described to draw with.
#ifndef TESTS_PANEL_DRAWN_SCREEN_H
#define TESTS_PANEL_DRAWN_SCREEN_H

#include <string>
#include <vector>

namespace test
{

/// Knows characters that take one column, the cursor, erasing, inserting, deleting and scrolling; colours and modes
/// do nothing. Anything else is kept in unknown(), so that a test notices what this does not know.
class DrawnScreen
{
public:
    DrawnScreen(int columns, int lines);

    void take(const std::string& bytes);
    void resize(int columns, int lines); ///< clears

    /// \return the lines without spaces behind them
    std::vector<std::string> lines() const;

    /// \return all lines, each with a line feed
    std::string text() const;

    const std::string& unknown() const { return m_unknown; }

private:
    using Line = std::vector<std::string>; // a character in each column

    void put(char byte);
    void show(char byte);
    void control(char byte);
    void endSequence(char last);
    bool moveCursor(char last, int count);
    bool change(char last, int count);
    void erase(int from, int end);
    void eraseLines(int mode);
    void moveLines(int at, int count);
    void shift(int count);
    void lineFeed();
    int number(std::size_t index, int whenMissing) const;
    Line emptyLine() const;

    int m_columns;
    int m_line = 0;
    int m_column = 0;
    int m_top = 0;
    int m_bottom; ///< the last line that scrolls
    std::vector<Line> m_lines;
    std::string m_sequence; ///< an escape sequence that is not over
    std::string m_last;     ///< the last character, which can be repeated
    std::string m_unknown;
};

} // namespace test

#endif
