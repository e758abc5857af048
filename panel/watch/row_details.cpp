// SPDX-License-Identifier: MIT
#include "panel/watch/row_details.h"

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"
#include "panel/watch/row_texts.h"
#include "panel/watch/watch_words.h"
#include "runtime/model/listed_value.h"

#include <QDateTime>

#include <algorithm>

namespace plc
{

namespace
{

const int labelWidth = 10;

/// Nothing where there is nothing to tell.
QStringList labelled(const char* label, const QStringList& texts, int columns)
{
    QStringList lines;
    for (const QString& line : wrapped(texts, std::max(columns - labelWidth, 1)))
        lines << QString::fromLatin1(lines.isEmpty() ? label : "").leftJustified(labelWidth) + line;
    return lines;
}

QStringList labelled(const char* label, const QString& text, int columns)
{
    return text.isEmpty() ? QStringList()
                          : labelled(label, text.split(QLatin1Char(' '), Qt::SkipEmptyParts), columns);
}

QString typeText(const ListedVariable& listed)
{
    QString text = valueTypeWord(listed.type);
    if (listed.count != 1)
        text += QStringLiteral(" x %1").arg(listed.count);
    if (listed.order != WordOrder::Usual)
        text += QStringLiteral(", order ") + wordOrderWord(listed.order);
    if (listed.scale != 1)
        text += QStringLiteral(", scale %1").arg(listed.scale);
    if (listed.offset != 0)
        text += QStringLiteral(", offset %1").arg(listed.offset);
    return text;
}

QString accessText(const WatchRow& row)
{
    if (row.listed && row.listed->access == Access::ReadOnly)
        return QStringLiteral("only read (the list says so)");
    return areaOf(row.variable.area).isWritable ? QStringLiteral("read and written")
                                                : QStringLiteral("only read (its area)");
}

QStringList listLines(const ListedVariable& listed, int columns)
{
    return labelled("TYPE", typeText(listed), columns) + labelled("LIMITS", limitsText(listed), columns) +
           labelled("COMMENT", listed.comment, columns);
}

} // namespace

QString timeOfDay(qint64 ms)
{
    return ms < 0 ? QStringLiteral("-")
                  : QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("HH:mm:ss"));
}

QStringList rowDetails(const WatchRow& row, const SeenValue& seen, const QString& written, ValueFormat format,
                       int columns)
{
    QStringList lines = labelled("VARIABLE", rowName(row), columns);
    if (row.listed)
        lines += labelled("ADDRESS", variableText(row.variable), columns) + listLines(*row.listed, columns);
    lines += labelled("ACCESS", accessText(row), columns);
    lines += labelled("VALUE", valuePieces(row, format, std::max(columns - labelWidth, 1)), columns);
    lines += labelled("MIN", elementsText(row, seen.range.least, format), columns);
    lines += labelled("MAX", elementsText(row, seen.range.greatest, format), columns);
    lines += labelled("CHANGED", timeOfDay(seen.changedAtMs), columns);
    lines += labelled("READ", timeOfDay(row.value.readAtMs), columns);
    lines += labelled("STATE", stateText(row), columns);
    return lines + labelled("WRITTEN", written, columns);
}

} // namespace plc
