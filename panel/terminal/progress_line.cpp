// SPDX-License-Identifier: MIT
#include "panel/terminal/progress_line.h"

#include "panel/terminal/output.h"
#include "panel/terminal/terminal.h"

namespace plc
{

namespace
{

const int silentMs = 1000;
const int betweenTextsMs = 100;

} // namespace

ProgressLine::ProgressLine() : m_wanted(errorsGoToTerminal() && knowsEscapeCodes())
{
    m_sinceBegin.start();
}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::show(const QString& text)
{
    const bool tooSoon = m_isShown && m_sinceShown.elapsed() < betweenTextsMs;
    const bool isThere = m_isShown && text == m_shown;
    if (!m_wanted || tooSoon || isThere || m_sinceBegin.elapsed() < silentMs)
        return;
    printError(QLatin1Char('\r') + text.left(errorTerminalColumns() - 1) + QStringLiteral("\x1b[K"));
    m_isShown = true;
    m_shown = text;
    m_sinceShown.start();
}

void ProgressLine::clear()
{
    if (m_isShown)
        printError(QStringLiteral("\r\x1b[K"));
    m_isShown = false;
}

} // namespace plc
