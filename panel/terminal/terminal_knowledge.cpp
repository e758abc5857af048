// SPDX-License-Identifier: MIT
#define NCURSES_NOMACROS 1

#include "panel/terminal/terminal_knowledge.h"

// Its macros have the names of many things, so nothing else is here.
#include <curses.h>
#include <term.h>
#include <unistd.h>

namespace plc
{

bool canPlaceText()
{
    int error = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &error) == ERR)
        return false;
    const bool canPlace = cursor_address != nullptr && clear_screen != nullptr;
    del_curterm(cur_term);
    return canPlace;
}

} // namespace plc
