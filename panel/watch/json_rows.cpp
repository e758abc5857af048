// SPDX-License-Identifier: MIT
#include "panel/watch/json_rows.h"

#include "panel/watch/json_number.h"
#include "panel/watch/watch_json.h"
#include "panel/watch/watch_words.h"
#include "runtime/model/listed_value.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace plc
{

namespace
{

// Room for a line: for what it always has, for each character of a unit, for each element.
const int roomOfLine = 600;
const int roomOfCharacter = 3;
const int roomOfNumber = 12;

const int mostLimits = 4096;

char* write(const char* text, std::size_t size, char* line)
{
    std::memcpy(line, text, size);
    return line + size;
}

template <std::size_t size>
char* write(const char (&text)[size], char* line)
{
    return write(text, size - 1, line);
}

char* write(const QByteArray& text, char* line)
{
    return write(text.constData(), static_cast<std::size_t>(text.size()), line);
}

char* writeNumber(quint32 number, char* line, int base = 10)
{
    return std::to_chars(line, line + roomOfNumber, number, base).ptr;
}

char* writeAddress(const Variable& variable, char* line)
{
    const Area& area = areaOf(variable.area);
    if (area.kind != ElementKind::BitInWord)
        return writeNumber(static_cast<quint32>(variable.element + area.origin), line, area.numberBase);
    line = writeNumber(static_cast<quint32>(variable.element / bitsOfWord), line);
    *line++ = '.';
    return writeNumber(static_cast<quint32>(variable.element % bitsOfWord), line);
}

/// \return null where JSON has another form for a character
char* writeText(const QByteArray& text, char* line)
{
    const bool isPlain = std::none_of(text.begin(), text.end(), [](char byte) {
        return byte == '"' || byte == '\\' || static_cast<unsigned char>(byte) < ' ';
    });
    return isPlain ? write(text, line) : nullptr;
}

char* writeElements(const std::vector<quint32>& values, char* line)
{
    line = write("\"values\":[", line);
    for (std::size_t index = 0; index < values.size(); ++index) {
        if (index > 0)
            *line++ = ',';
        line = writeNumber(values[index], line);
    }
    return write("]}\n", line);
}

/// \return the most bytes that the line of \a row takes
int roomFor(const WatchRow& row)
{
    int room = roomOfLine + roomOfNumber * static_cast<int>(row.value.values.size());
    if (row.listed != nullptr)
        room += row.listed->name.utf8().size() + roomOfCharacter * row.listed->unit.size();
    return room;
}

/// \return a number as a member of JSON has it
QByteArray jsonOf(double number)
{
    const QByteArray array = QJsonDocument(QJsonArray{number}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

} // namespace

char* JsonRows::writeWord(ValueState state, char* line)
{
    QByteArray& word = m_states.at(static_cast<std::size_t>(state));
    if (word.isEmpty())
        word = valueStateWord(state).toLatin1();
    return write(word, line);
}

char* JsonRows::writeWord(ValueType type, char* line)
{
    QByteArray& word = m_types.at(static_cast<std::size_t>(type));
    if (word.isEmpty())
        word = valueTypeWord(type).toLatin1();
    return write(word, line);
}

char* JsonRows::writeLimit(const char* member, double limit, char* line)
{
    quint64 bits = 0;
    std::memcpy(&bits, &limit, sizeof bits);
    auto text = m_limits.constFind(bits);
    if (text == m_limits.constEnd()) {
        if (m_limits.size() == mostLimits)
            m_limits.clear();
        text = m_limits.insert(bits, jsonOf(limit));
    }
    return write(text.value(), write(member, std::strlen(member), line));
}

/// The members between the count and the state. \return null where they are to be written otherwise
char* JsonRows::writeListed(const WatchRow& row, char* line)
{
    const ListedVariable& listed = *row.listed;
    if (listed.max)
        line = writeLimit(",\"max\":", *listed.max, line);
    if (listed.min)
        line = writeLimit(",\"min\":", *listed.min, line);
    line = writeText(listed.name.utf8(), write(",\"name\":\"", line));
    if (line == nullptr)
        return nullptr;
    *line++ = '"';
    if (!listed.min && !listed.max)
        return line;
    return isOutside(row) ? write(",\"outside\":true", line) : write(",\"outside\":false", line);
}

/// Members stand by their names, as in an object of Qt's. \return the end; null where the line is to be written otherwise
char* JsonRows::writeLine(const WatchRow& row, char* line)
{
    JsonNumber number;
    if (row.listed != nullptr && !takeNumber(*row.listed, row.value.values, &number))
        return nullptr;
    line = writeAddress(row.variable, write("{\"address\":\"", line));
    line = writeNumber(static_cast<quint32>(row.variable.area), write("\",\"area\":", line));
    line = writeNumber(static_cast<quint32>(row.variable.count), write(",\"count\":", line));
    if (row.listed != nullptr)
        line = writeListed(row, line);
    if (line == nullptr)
        return nullptr;
    line = writeWord(row.value.state, write(",\"state\":\"", line));
    const int station = row.variable.station < 0 ? m_station : row.variable.station;
    line = writeNumber(static_cast<quint32>(station), write("\",\"station\":", line));
    if (row.listed != nullptr)
        line = write("\"", write(number.text, number.textSize, write(",\"text\":\"", line)));
    line = write("\"", write(m_timeText, write(",\"time\":\"", line)));
    if (row.listed == nullptr)
        return writeElements(row.value.values, write(",", line));
    line = writeWord(row.listed->type, write(",\"type\":\"", line));
    if (!row.listed->unit.isEmpty())
        line = writeText(row.listed->unit.toUtf8(), write("\",\"unit\":\"", line));
    if (line == nullptr)
        return nullptr;
    line = write(number.value, number.valueSize, write("\",\"value\":", line));
    return writeElements(row.value.values, write(",", line));
}

bool JsonRows::appendQuickly(const WatchRow& row, QByteArray* lines)
{
    if (row.value.ageMs < 0 || hasFailed(row.value.failure))
        return false;
    const int begin = lines->size();
    lines->resize(begin + roomFor(row));
    char* const line = lines->data() + begin;
    char* const end = writeLine(row, line);
    lines->resize(end == nullptr ? begin : begin + static_cast<int>(end - line));
    return end != nullptr;
}

void JsonRows::append(const WatchRow& row, const QDateTime& time, QByteArray* lines)
{
    if (m_timeText.isEmpty() || m_time != time) {
        m_time = time;
        m_timeText = time.toString(Qt::ISODateWithMs).toUtf8();
    }
    if (!appendQuickly(row, lines))
        lines->append(watchJson(row, m_station, time).toUtf8()).append('\n');
}

} // namespace plc
