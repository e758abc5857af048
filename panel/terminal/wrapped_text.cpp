#include "panel/terminal/wrapped_text.h"

namespace plc
{

QStringList wrapped(const QStringList& texts, int width)
{
    QStringList lines;
    for (const QString& text : texts) {
        if (!lines.isEmpty() && lines.last().size() + 1 + text.size() <= width)
            lines.last() += QLatin1Char(' ') + text;
        else
            lines << text;
    }
    return lines;
}

QStringList chopped(const QString& text, int width)
{
    QStringList pieces = {text.left(width)};
    for (int at = width; at < text.size(); at += width)
        pieces << text.mid(at, width);
    return pieces;
}

} // namespace plc
