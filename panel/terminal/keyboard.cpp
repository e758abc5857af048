// SPDX-License-Identifier: MIT
#include "panel/terminal/keyboard.h"

#include "panel/terminal/terminal.h"

#include <unistd.h>

namespace plc
{

namespace
{

/// A program in the background that reads the terminal is stopped by the system.
bool inBackground()
{
    return inputIsTerminal() && tcgetpgrp(STDIN_FILENO) != getpgrp();
}

} // namespace

int Keyboard::descriptor() const
{
    return m_ended || inBackground() ? -1 : STDIN_FILENO;
}

QByteArray Keyboard::read()
{
    char bytes[256];
    const ssize_t size = ::read(STDIN_FILENO, bytes, sizeof bytes);
    m_ended = size <= 0;
    return QByteArray(bytes, m_ended ? 0 : static_cast<int>(size));
}

} // namespace plc
