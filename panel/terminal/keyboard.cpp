// SPDX-License-Identifier: MIT
#include "panel/terminal/keyboard.h"

#include <unistd.h>

namespace plc
{

namespace
{

/// A program in the background that reads the terminal, or changes it, is stopped by the system.
bool inBackground()
{
    return isatty(STDIN_FILENO) == 1 && tcgetpgrp(STDIN_FILENO) != getpgrp();
}

} // namespace

Keyboard::Keyboard(bool keys) : m_keys(keys)
{
    take();
}

Keyboard::~Keyboard()
{
    release();
}

void Keyboard::take()
{
    if (!m_keys || m_taken || inBackground() || tcgetattr(STDIN_FILENO, &m_before) != 0)
        return;
    termios keys = m_before;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    m_taken = tcsetattr(STDIN_FILENO, TCSADRAIN, &keys) == 0;
}

void Keyboard::release()
{
    if (m_taken && !inBackground())
        tcsetattr(STDIN_FILENO, TCSADRAIN, &m_before);
    m_taken = false;
}

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
