// SPDX-License-Identifier: MIT
#include "panel/terminal/wrapped_text.h"

#include "panel/terminal/display_width.h"

namespace plc
{

QStringList wrapped(const QStringList& texts, int width)
{
    QStringList lines;
    for (const QString& text : texts) {
        if (!lines.isEmpty() && columnsOf(lines.last()) + 1 + columnsOf(text) <= width)
            lines.last() += QLatin1Char(' ') + text;
        else
            lines << text;
    }
    return lines;
}

QStringList chopped(const QString& text, int width)
{
    QStringList pieces;
    QString rest = text;
    do {
        // One character goes on a line by itself, however narrow that is.
        const QString fitting = leftColumns(rest, width);
        pieces << (fitting.isEmpty() ? rest.left(1) : fitting);
        rest = rest.mid(pieces.last().size());
    } while (!rest.isEmpty());
    return pieces;
}

} // namespace plc
