// SPDX-License-Identifier: MIT
#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1

#include "panel/terminal/screen.h"

#include "panel/terminal/output.h"
#include "panel/terminal/terminal.h"
#include "panel/terminal/terminal_knowledge.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <curses.h>

namespace plc
{

namespace
{

// How long the rest of a key's sequence may take behind its Esc over a slow line.
const int escapeMs = 250;

const wchar_t controlH = 8;
const wchar_t controlL = 12;
const wchar_t controlU = 21;
const wchar_t escape = 27;
const wchar_t deleteKey = 127;

SCREEN* terminalScreen = nullptr;
std::terminate_handler terminateBefore = nullptr;

[[noreturn]] void restoreAndTerminate()
{
    if (terminalScreen != nullptr)
        endwin();
    terminateBefore();
    std::abort();
}

/// ncurses wants to be told of signals by handlers of its own; here they are waited for.
class OwnSignalHandlers
{
public:
    OwnSignalHandlers()
    {
        for (std::size_t index = 0; index < count; ++index)
            sigaction(signals[index], nullptr, &m_before[index]);
    }
    ~OwnSignalHandlers()
    {
        for (std::size_t index = 0; index < count; ++index)
            sigaction(signals[index], &m_before[index], nullptr);
    }
    OwnSignalHandlers(const OwnSignalHandlers&) = delete;
    OwnSignalHandlers& operator=(const OwnSignalHandlers&) = delete;

private:
    static constexpr std::size_t count = 4;
    static constexpr int signals[count] = {SIGINT, SIGTERM, SIGTSTP, SIGWINCH};
    struct sigaction m_before[count] = {};
};

void beginColours()
{
    if (!wantsColours() || !has_colors())
        return;
    start_color();
    use_default_colors();
    init_pair(TextLook::Red, COLOR_RED, -1);
    init_pair(TextLook::Green, COLOR_GREEN, -1);
    init_pair(TextLook::Yellow, COLOR_YELLOW, -1);
}

void setModes()
{
    cbreak();
    noecho();
    nonl();
    intrflush(stdscr, FALSE);
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    idlok(stdscr, TRUE); // a table that scrolls is shifted by the terminal
    if (qEnvironmentVariableIsEmpty("ESCDELAY"))
        set_escdelay(escapeMs);
    mousemask(BUTTON1_PRESSED | BUTTON4_PRESSED | BUTTON5_PRESSED, nullptr);
    mouseinterval(0); // a press is a press, whatever follows
}

attr_t attributesOf(const TextLook& look)
{
    attr_t attributes = A_NORMAL;
    if (look.bold)
        attributes |= A_BOLD;
    if (look.reverse)
        attributes |= A_REVERSE;
    return attributes;
}

/// A character that the terminal would act on is shown as a dot.
QByteArray shownBytes(const QString& text)
{
    QString shown = text;
    for (QChar& character : shown) {
        if (character.category() == QChar::Other_Control)
            character = QLatin1Char('.');
    }
    return shown.toLocal8Bit();
}

void draw(int line, const Span& span)
{
    const bool colours = wantsColours() && has_colors();
    const short pair = colours ? static_cast<short>(span.look.colour) : short(0);
    wattr_set(stdscr, attributesOf(span.look), pair, nullptr);
    if (wmove(stdscr, line, span.column) != ERR)
        waddnstr(stdscr, shownBytes(span.text).constData(), -1);
}

Key::Kind kindOfFunctionKey(wint_t code)
{
    switch (code) {
    case KEY_UP:
        return Key::Up;
    case KEY_DOWN:
        return Key::Down;
    case KEY_PPAGE:
        return Key::PageUp;
    case KEY_NPAGE:
        return Key::PageDown;
    case KEY_HOME:
    case KEY_FIND: // what some terminals send for it
    case KEY_A1:
        return Key::Home;
    case KEY_END:
    case KEY_SELECT:
    case KEY_LL:
        return Key::End;
    case KEY_ENTER:
        return Key::Enter;
    case KEY_BACKSPACE:
    case KEY_DC:
        return Key::Backspace;
    case KEY_F(1):
        return Key::Help;
    default:
        return Key::Other;
    }
}

Key mouseKey()
{
    MEVENT event = {};
    Key key;
    if (getmouse(&event) == ERR)
        return key;
    key.line = event.y;
    if ((event.bstate & BUTTON4_PRESSED) != 0)
        key.kind = Key::WheelUp;
    else if ((event.bstate & BUTTON5_PRESSED) != 0)
        key.kind = Key::WheelDown;
    else if ((event.bstate & BUTTON1_PRESSED) != 0)
        key.kind = Key::Click;
    return key;
}

Key::Kind kindOfCharacter(wint_t character)
{
    switch (character) {
    case L'\r':
    case L'\n':
        return Key::Enter;
    case escape:
        return Key::Escape;
    case controlH:
    case deleteKey:
        return Key::Backspace;
    case controlU:
        return Key::EraseLine;
    case controlL:
        return Key::Redraw;
    default:
        return character < L' ' ? Key::Other : Key::Character;
    }
}

Key keyOf(int result, wint_t code)
{
    if (result == KEY_CODE_YES && code == KEY_MOUSE)
        return mouseKey();
    Key key;
    key.kind = result == KEY_CODE_YES ? kindOfFunctionKey(code) : kindOfCharacter(code);
    const auto character = static_cast<uint>(code);
    if (key.kind == Key::Character)
        key.text = QString::fromUcs4(&character, 1);
    return key;
}

} // namespace

bool Screen::isPossible()
{
    return isTerminal() && canPlaceText();
}

std::unique_ptr<Screen> Screen::open()
{
    const OwnSignalHandlers handlers;
    terminalScreen = newterm(nullptr, stdout, stdin);
    return terminalScreen == nullptr ? nullptr : std::unique_ptr<Screen>(new Screen);
}

Screen::Screen()
{
    if (errorsGoToTerminal())
        holdErrors();
    terminateBefore = std::set_terminate(restoreAndTerminate);
    setModes();
    beginColours();
}

Screen::~Screen()
{
    leave();
    std::set_terminate(terminateBefore);
    delscreen(terminalScreen);
    terminalScreen = nullptr;
    releaseErrors();
}

int Screen::columns() const
{
    return getmaxx(stdscr);
}

int Screen::lines() const
{
    return getmaxy(stdscr);
}

void Screen::show(const Page& page)
{
    werase(stdscr);
    const int count = std::min(static_cast<int>(page.lines.size()), lines());
    for (int line = 0; line < count; ++line) {
        for (const Span& span : page.lines[static_cast<std::size_t>(line)])
            draw(line, span);
    }
    curs_set(page.cursorLine < 0 ? 0 : 1);
    wmove(stdscr, std::max(page.cursorLine, 0), std::max(page.cursorColumn, 0));
    wrefresh(stdscr);
}

void Screen::resized()
{
    const TerminalSize size = terminalSize();
    resizeterm(size.lines, size.columns);
    redraw();
}

void Screen::redraw()
{
    clearok(stdscr, TRUE);
}

void Screen::leave()
{
    if (!isendwin()) {
        curs_set(1);
        endwin();
    }
    redraw();
}

std::vector<Key> Screen::keys()
{
    std::vector<Key> keys;
    wint_t code = 0;
    for (int result; (result = wget_wch(stdscr, &code)) != ERR;) {
        if (result != KEY_CODE_YES || code != KEY_RESIZE)
            keys.push_back(keyOf(result, code));
    }
    return keys;
}

} // namespace plc
