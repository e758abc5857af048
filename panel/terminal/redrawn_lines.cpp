// SPDX-License-Identifier: MIT
#include "panel/terminal/redrawn_lines.h"

namespace plc
{

QString RedrawnLines::draw(const QStringList& lines)
{
    QString text;
    if (m_drawn > 0)
        text += QStringLiteral("\x1b[%1A").arg(m_drawn);
    for (const QString& line : lines)
        text += QLatin1Char('\r') + line + QStringLiteral("\x1b[K\n");
    m_drawn = lines.size();
    return text + QStringLiteral("\x1b[J");
}

QString RedrawnLines::clear()
{
    m_drawn = 0;
    return QStringLiteral("\x1b[H\x1b[2J");
}

} // namespace plc
