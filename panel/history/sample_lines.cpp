// SPDX-License-Identifier: MIT
#include "panel/history/sample_lines.h"

#include "history/local_time.h"
#include "panel/terminal/display_width.h"
#include "runtime/model/printable.h"
#include "runtime/model/value_text.h"
#include "runtime/model/value_type.h"

#include <QJsonObject>

#include <cmath>

namespace plc
{

namespace
{

const QString between = QStringLiteral("  ");

ValueType typeOf(const Series& series)
{
    return parseValueType(series.type).value_or(ValueType::Uint32); // elements without a list are numbers
}

QString valueOf(const Series& series, const QString& text)
{
    if (typeOf(series) == ValueType::Text)
        return QLatin1Char('"') + printable(text) + QLatin1Char('"');
    return printable(series.unit.isEmpty() ? text : text + QLatin1Char(' ') + series.unit);
}

/// Scaled values are numbers too, whatever the type of the elements.
QJsonValue jsonOf(const Series& series, const QString& text)
{
    const ValueType type = typeOf(series);
    if (type == ValueType::Text)
        return text;
    const QJsonValue value = jsonOfText(type, text);
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return value.isString() && isNumber && std::abs(number) < greatestExactWhole ? QJsonValue(number) : value;
}

void insertGiven(QJsonObject* object, const char* key, const QString& text)
{
    if (!text.isEmpty())
        object->insert(QLatin1String(key), text);
}

} // namespace

QString sampleLine(const Series& series, qint64 timeMs, SampleState state, const QString& text,
                   int nameColumns)
{
    const QString shown = state == SampleState::Fresh
                              ? valueOf(series, text)
                              : QLatin1Char('(') + sampleStateWord(state) + QLatin1Char(')');
    return localTimeText(timeMs) + between + padded(printable(series.name), nameColumns) + between + shown +
           QLatin1Char('\n');
}

QString sampleJson(const Series& series, qint64 timeMs, SampleState state, const QString& text)
{
    QJsonObject object{{QStringLiteral("time"), localTimeText(timeMs)},
                       {QStringLiteral("name"), series.name},
                       {QStringLiteral("state"), sampleStateWord(state)}};
    insertGiven(&object, "type", series.type);
    insertGiven(&object, "unit", series.unit);
    if (state == SampleState::Fresh) {
        object.insert(QStringLiteral("value"), jsonOf(series, text));
        object.insert(QStringLiteral("text"), text);
    }
    return jsonLine(object) + QLatin1Char('\n');
}

QString seriesLine(const LoggedSeries& series, int nameColumns)
{
    const QString times =
        series.firstMs
            ? QStringLiteral("%1 to %2").arg(localTimeText(*series.firstMs), localTimeText(*series.lastMs))
            : QStringLiteral("nothing yet");
    const int unitColumns = 8;
    return padded(printable(series.series.name), nameColumns) + between +
           padded(printable(series.series.unit), unitColumns) + between + times + QLatin1Char('\n');
}

QString seriesJson(const LoggedSeries& series)
{
    QJsonObject object{{QStringLiteral("name"), series.series.name}};
    insertGiven(&object, "type", series.series.type);
    insertGiven(&object, "unit", series.series.unit);
    if (series.firstMs) {
        object.insert(QStringLiteral("first"), localTimeText(*series.firstMs));
        object.insert(QStringLiteral("last"), localTimeText(*series.lastMs));
    }
    return jsonLine(object) + QLatin1Char('\n');
}

QString rangeLine(TimeRange range)
{
    return QStringLiteral("%1 to %2\n").arg(localTimeText(range.fromMs), localTimeText(range.toMs));
}

} // namespace plc
