// SPDX-License-Identifier: MIT
#include "panel/watch/json_rows.h"

#include "panel/watch/watch_json.h"
#include "panel/watch/watch_words.h"
#include "runtime/model/shown_number.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <charconv>
#include <cmath>
#include <utility>

namespace plc
{

namespace
{

// Whole numbers beyond it are texts, because many readers would not keep them exactly.
const double greatestExact = 9007199254740992.0;

void appendNumber(qint64 number, QByteArray* line)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number);
    line->append(digits, static_cast<int>(end.ptr - digits));
}

void appendElements(const std::vector<quint32>& values, QByteArray* line)
{
    line->append("\"values\":[");
    for (std::size_t index = 0; index < values.size(); ++index) {
        if (index > 0)
            line->append(',');
        appendNumber(values[index], line);
    }
    line->append("]}\n");
}

/// \return true for numbers that are shown as they are: whole, without scale and digits, and without limits
bool isPlain(const ListedVariable& listed)
{
    return isWholeNumber(listed.type) && listed.scale == 1 && listed.offset == 0 && listed.digits <= 0 &&
           !listed.min && !listed.max && listed.unit.isEmpty() && listed.count == 1;
}

/// \return false when \a row is not to be written by its number alone, or JSON has another form for it
bool takePlainNumber(const WatchRow& row, qint64* number)
{
    if (!isPlain(*row.listed))
        return false;
    const double shown = shownNumber(*row.listed, row.value.values, 0);
    if (!(std::fabs(shown) < greatestExact)) // nor what is none
        return false;
    *number = static_cast<qint64>(shown);
    return true;
}

} // namespace

/// What is printed once is not worth being kept.
bool JsonRows::isSecondLine(std::size_t index)
{
    if (m_fixed.size() <= index)
        m_fixed.resize(index + 1);
    return std::exchange(m_fixed[index].isKnown, true);
}

const JsonRows::Fixed& JsonRows::fixedOf(std::size_t index, const WatchRow& row)
{
    Fixed& fixed = m_fixed[index];
    if (!fixed.begin.isEmpty())
        return fixed;
    // As watchJson() has it before the first answer, when no value is in it.
    WatchRow empty = row;
    empty.value = CyclicValue();
    const QByteArray line = watchJson(empty, m_station, m_time).toUtf8();
    const QByteArray state = "\"state\":\"";
    const QByteArray type = ",\"type\":\"";
    fixed.begin = line.left(line.lastIndexOf(state) + state.size());
    if (row.listed)
        fixed.type = line.mid(line.lastIndexOf(type), line.size() - 1 - line.lastIndexOf(type));
    return fixed;
}

void JsonRows::append(std::size_t index, const WatchRow& row, const QDateTime& time, QByteArray* lines)
{
    const bool isUsual = row.value.ageMs >= 0 && !hasFailed(row.value.failure);
    const bool isListed = row.listed.has_value();
    qint64 number = 0;
    if (!isSecondLine(index) || !isUsual || (isListed && !takePlainNumber(row, &number))) {
        lines->append(watchJson(row, m_station, time).toUtf8()).append('\n');
        return;
    }
    if (m_timeText.isEmpty() || m_time != time) {
        m_time = time;
        m_timeText = time.toString(Qt::ISODateWithMs).toUtf8();
    }
    const Fixed& fixed = fixedOf(index, row);
    lines->append(fixed.begin).append(stateWord(row.value).toLatin1());
    lines->append("\",\"station\":");
    appendNumber(row.variable.station < 0 ? m_station : row.variable.station, lines);
    if (isListed) {
        lines->append(",\"text\":\"");
        appendNumber(number, lines);
        lines->append('"');
    }
    lines->append(",\"time\":\"").append(m_timeText).append('"');
    if (isListed) {
        lines->append(fixed.type).append(",\"value\":");
        appendNumber(number, lines);
    }
    lines->append(',');
    appendElements(row.value.values, lines);
}

} // namespace plc
