// SPDX-License-Identifier: MIT
#include "panel/watch/row_texts.h"

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"
#include "runtime/model/listed_value.h"

#include <algorithm>

namespace plc
{

namespace
{

const QString cutMark = QStringLiteral("..");

QStringList textsOf(const WatchRow& row, const std::vector<quint32>& elements, ValueFormat format)
{
    QStringList texts =
        row.listed ? listedTexts(*row.listed, elements) : valueTexts(row.variable.area, elements, format);
    if (row.listed && !texts.isEmpty())
        texts.last() += unitText(*row.listed);
    return texts;
}

} // namespace

QString rowName(const WatchRow& row)
{
    return row.listed ? row.listed->name.text() : variableText(row.variable);
}

QStringList valuePieces(const WatchRow& row, ValueFormat format, int width)
{
    if (row.value.ageMs < 0) // never read: the driver's memory has a zero there all the same
        return {QStringLiteral("-")};
    QStringList texts = textsOf(row, row.value.values, format);
    if (width > 0 && row.listed && row.listed->type == ValueType::Text)
        texts = chopped(texts.first(), width);
    if (row.value.state != ValueState::Fresh && !texts.isEmpty()) {
        texts.first().prepend(QLatin1Char('('));
        texts.last().append(QLatin1Char(')'));
    }
    return texts;
}

QString elementsText(const WatchRow& row, const std::vector<quint32>& elements, ValueFormat format)
{
    return elements.empty() ? QStringLiteral("-") : textsOf(row, elements, format).join(QLatin1Char(' '));
}

QString cutText(const QString& text, int columns)
{
    if (columnsOf(text) <= columns)
        return text;
    return leftColumns(text, std::max(columns - cutMark.size(), 0)) + cutMark.left(columns);
}

} // namespace plc
