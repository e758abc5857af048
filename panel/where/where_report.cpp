// SPDX-License-Identifier: MIT
#include "panel/where/where_report.h"

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"
#include "panel/where/place.h"
#include "panel/where/value_words.h"
#include "runtime/model/listed_value.h"
#include "runtime/model/modbus_address.h"
#include "runtime/model/value_text.h"

#include <QJsonArray>

#include <algorithm>
#include <set>

namespace plc
{

namespace
{

const char* const headings[] = {"NAME", "VARIABLE", "READ", "WRITE", "MODBUS", "HEX", "4XXXX", "VALUE"};
const char* const labels[] = {"name",   "variable",    "read by", "written by",
                              "Modbus", "hexadecimal", "4xxxx",   "value"};
enum Column { Name, Address, Read, Write, Modbus, Hex, Traditional, Value, Columns };

const int gap = 2;

Place placeFor(const LocatedVariable& variable)
{
    Place place = placeOf(variable.elements);
    if (variable.listed && variable.listed->access == Access::ReadOnly)
        place.writeFunctions.clear();
    return place;
}

QString functionsText(const std::vector<int>& functions)
{
    QStringList texts;
    for (const int function : functions)
        texts << QString::number(function);
    return texts.isEmpty() ? QStringLiteral("-") : texts.join(QStringLiteral(", "));
}

QStringList cellsOf(const LocatedVariable& variable)
{
    const Place place = placeFor(variable);
    const QString value =
        variable.listed ? valueWords(*variable.listed, place) : elementsWords(variable.elements, place);
    return {variable.listed ? variable.listed->name.text() : QString(),
            variableText(variable.elements),
            functionsText(place.readFunctions),
            functionsText(place.writeFunctions),
            placeText(place),
            hexAddressText(place),
            traditionalText(place),
            value};
}

bool isEmptyColumn(const std::vector<QStringList>& rows, int column)
{
    return std::all_of(rows.begin(), rows.end(),
                       [column](const QStringList& row) { return row.at(column).isEmpty(); });
}

std::vector<int> widthsOf(const std::vector<QStringList>& rows)
{
    std::vector<int> widths;
    for (int column = 0; column < Columns; ++column) {
        int width = isEmptyColumn(rows, column) ? 0 : static_cast<int>(qstrlen(headings[column]));
        for (const QStringList& row : rows)
            width = std::max(width, columnsOf(row.at(column)));
        widths.push_back(width);
    }
    return widths;
}

QString lineOf(const QStringList& cells, const std::vector<int>& widths)
{
    QString line;
    for (int column = 0; column < Columns; ++column) {
        const int width = widths[static_cast<std::size_t>(column)];
        if (width > 0)
            line += padded(cells.at(column), width + gap);
    }
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line + QLatin1Char('\n');
}

QString tableText(const std::vector<QStringList>& rows, const std::vector<int>& widths)
{
    QStringList heading;
    for (const char* const each : headings)
        heading << QLatin1String(each);
    QString text = lineOf(heading, widths);
    for (const QStringList& row : rows)
        text += lineOf(row, widths);
    return text;
}

QString paragraphText(const QStringList& cells, int width)
{
    const int labelWidth = 13;
    const QString& title = cells.at(cells.at(Name).isEmpty() ? Address : Name);
    QString text = title + QLatin1Char('\n');
    for (int column = cells.at(Name).isEmpty() ? Read : Address; column < Columns; ++column) {
        if (cells.at(column).isEmpty())
            continue;
        QString label = QStringLiteral("  ") + QLatin1String(labels[column]);
        for (const QString& line :
             wrapped(cells.at(column).split(QLatin1Char(' ')), std::max(width - labelWidth - 2, 10))) {
            text += padded(label, labelWidth + 2) + line + QLatin1Char('\n');
            label.clear();
        }
    }
    return text;
}

QString paragraphsText(const std::vector<QStringList>& rows, int width)
{
    QStringList paragraphs;
    for (const QStringList& row : rows)
        paragraphs << paragraphText(row, width);
    return paragraphs.join(QLatin1Char('\n'));
}

QString functionsGuide(const std::vector<LocatedVariable>& variables, int width)
{
    std::set<int> functions;
    for (const LocatedVariable& variable : variables) {
        const Place place = placeFor(variable);
        functions.insert(place.readFunctions.begin(), place.readFunctions.end());
        functions.insert(place.writeFunctions.begin(), place.writeFunctions.end());
    }
    if (functions.empty())
        return QString();
    QStringList texts;
    for (const int function : functions)
        texts << QStringLiteral("%1 %2").arg(function).arg(functionName(function));
    const QString text = QStringLiteral("Functions: ") + texts.join(QStringLiteral(", ")) + QLatin1Char('.');
    const QStringList lines = width > 0 ? wrapped(text.split(QLatin1Char(' ')), width) : QStringList{text};
    return QLatin1Char('\n') + lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QJsonArray jsonOfFunctions(const std::vector<int>& functions)
{
    QJsonArray array;
    for (const int function : functions)
        array.append(function);
    return array;
}

void addPlace(QJsonObject* object, const Place& place)
{
    object->insert(QStringLiteral("space"), QLatin1String(place.inCoils ? "coils" : "registers"));
    object->insert(QStringLiteral("modbusFirst"), place.first);
    object->insert(QStringLiteral("modbusLast"), place.last);
    object->insert(QStringLiteral("hex"), hexAddressText(place));
    object->insert(QStringLiteral("traditional"), traditionalText(place));
    object->insert(QStringLiteral("read"), jsonOfFunctions(place.readFunctions));
    object->insert(QStringLiteral("write"), jsonOfFunctions(place.writeFunctions));
    if (place.firstBit < 0)
        return;
    object->insert(QStringLiteral("firstBit"), place.firstBit);
    object->insert(QStringLiteral("lastBit"), place.lastBit);
}

void addMeaning(QJsonObject* object, const ListedVariable& variable)
{
    addListed(object, variable);
    object->insert(QLatin1String(variable.type == ValueType::Text ? "characters" : "valueCount"),
                   variable.count);
    const QString order = orderWord(variable);
    if (!order.isEmpty())
        object->insert(QStringLiteral("order"), order);
    if (isNumber(variable.type)) {
        object->insert(QStringLiteral("scale"), static_cast<double>(variable.scale));
        object->insert(QStringLiteral("offset"), static_cast<double>(variable.offset));
    }
    if (variable.digits >= 0)
        object->insert(QStringLiteral("digits"), variable.digits);
    if (!variable.comment.isEmpty())
        object->insert(QStringLiteral("comment"), variable.comment);
}

QJsonObject jsonOf(const LocatedVariable& variable)
{
    QJsonObject object = jsonOfVariable(variable.elements, variable.elements.station);
    if (variable.elements.station < 0) // whichever it will be read from
        object.remove(QStringLiteral("station"));
    const Place place = placeFor(variable);
    addPlace(&object, place);
    if (variable.listed)
        addMeaning(&object, *variable.listed);
    object.insert(QStringLiteral("words"), variable.listed ? valueWords(*variable.listed, place)
                                                           : elementsWords(variable.elements, place));
    return object;
}

} // namespace

QString whereText(const std::vector<LocatedVariable>& variables, int width)
{
    std::vector<QStringList> rows;
    rows.reserve(variables.size());
    for (const LocatedVariable& variable : variables)
        rows.push_back(cellsOf(variable));
    const std::vector<int> widths = widthsOf(rows);
    int tableWidth = -gap;
    for (const int each : widths)
        tableWidth += each > 0 ? each + gap : 0;
    const bool fits = width == 0 || tableWidth <= width;
    return (fits ? tableText(rows, widths) : paragraphsText(rows, width)) + functionsGuide(variables, width);
}

QString whereJson(const std::vector<LocatedVariable>& variables)
{
    QString text;
    for (const LocatedVariable& variable : variables)
        text += jsonLine(jsonOf(variable)) + QLatin1Char('\n');
    return text;
}

} // namespace plc
