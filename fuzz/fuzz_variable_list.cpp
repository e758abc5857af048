// SPDX-License-Identifier: MIT
// Any bytes as a list of variables; each line also as a variable and as values of the command line.

#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/shown_text.h"
#include "runtime/model/listed_value.h"
#include "runtime/model/variable_list.h"

#include <QHash>

#include <algorithm>
#include <cmath>

namespace
{

using fuzz::check;
using fuzz::isPrintable;
using plc::ListedVariable;
using plc::Variable;
using plc::VariableList;

const char shortHeader[] = "name,area,address,station,count,type";
const char deadbandHeader[] = "name,area,address,deadband,count,type";
const char longHeader[] =
    "name,area,address,station,count,type,order,scale,offset,unit,digits,min,max,access,comment";
const char semicolonHeader[] =
    "name;area;address;station;count;type;order;scale;offset;unit;digits;min;max;access;comment";

bool isInside(const Variable& elements)
{
    return elements.area >= 0 && elements.area < 15 && elements.element >= 0 && elements.count >= 1 &&
           elements.count <= plc::areaSize(elements.area) - elements.element && elements.station >= -1 &&
           elements.station <= 255;
}

/// \return elements of no particular values
std::vector<quint32> someElements(const Variable& variable)
{
    std::vector<quint32> elements;
    const int bits = 8 * plc::bytesOfElement(variable.area);
    const bool isBit = bits == 8;
    for (int i = 0; i < std::min(variable.count, 8); ++i) {
        const quint32 value = 0x9E3779B9U * static_cast<quint32>(variable.element + i + 1);
        elements.push_back(isBit ? value & 1 : bits == 16 ? value & 0xFFFF : value);
    }
    return elements;
}

// Whatever the controller answers can be shown, and exact values can be written as they are shown.
void checkShown(ListedVariable variable)
{
    const std::vector<quint32> elements = someElements(variable.elements);
    if (static_cast<int>(elements.size()) != variable.elements.count)
        return;
    const QString shown = plc::listedTexts(variable, elements).join(QLatin1Char(','));
    check(isPrintable(shown), "a value can be shown");
    const bool isExact = variable.scale == 1 && variable.offset == 0 && variable.digits < 0 &&
                         variable.type != plc::ValueType::Text && variable.type != plc::ValueType::Float32 &&
                         variable.type != plc::ValueType::Float64;
    if (!isExact || shown.contains(QLatin1String("not BCD")) || plc::isOutside(variable, elements))
        return;
    variable.access = plc::Access::Unsaid;
    QString error;
    check(plc::parseListed(variable, shown, &error) == elements, "a value is written as it is shown");
}

// What the panel relies on without looking again.
void checkVariable(const ListedVariable& variable)
{
    check(isInside(variable.elements), "a listed variable lies inside its area and has a station");
    check(!variable.name.isEmpty() && isPrintable(variable.name), "a name can be shown");
    check(variable.count >= 1 &&
              variable.elements.count ==
                  plc::elementsOfType(variable.type, variable.elements.area, variable.count),
          "the elements are those that the values of the type take");
    check(variable.scale != 0 && std::isfinite(variable.scale) && std::isfinite(variable.offset),
          "a number can be scaled there and back");
    check(isPrintable(variable.unit) && isPrintable(variable.comment), "what a list says can be shown");
    checkShown(variable);
}

// Lines are told apart by them, and names are the keys of what is shown.
void checkOrder(const VariableList& list, int lines)
{
    QHash<QString, int> names;
    int line = 0;
    for (const ListedVariable& variable : list.variables) {
        check(variable.line > line && variable.line <= lines, "variables stand in the order of their lines");
        check(!names.contains(variable.name), "no name is taken twice");
        names.insert(variable.name, variable.line);
        line = variable.line;
    }
}

// Messages go to a terminal as they are: nothing in them may be a command to it.
void checkErrors(const VariableList& list, int lines)
{
    for (int number = 0; number < list.errors.size(); ++number) {
        const QString& error = list.errors.at(number);
        for (const QString& line : error.split(QLatin1Char('\n')))
            check(isPrintable(line), "a message holds nothing that a terminal would act upon");
        const bool ofLine = error.startsWith(QLatin1String("line "));
        const bool ofTheRest =
            number == plc::mostListErrors && error.contains(QLatin1String(" more wrong line"));
        check(ofLine || ofTheRest || error.startsWith(QLatin1String("the list is empty")),
              "a message says where");
        const int line = error.section(QLatin1Char(' '), 1, 1).section(QLatin1Char(':'), 0, 0).toInt();
        check(!ofLine || (line >= 1 && line <= lines), "the line of a message is in the file");
    }
    check(static_cast<int>(list.variables.size()) + list.errors.size() <= lines + 1,
          "each line is one variable or one error at most");
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + QString(text).replace(QLatin1Char('"'), QLatin1String("\"\"")) +
           QLatin1Char('"');
}

QByteArray lineOf(const ListedVariable& variable)
{
    const Variable& elements = variable.elements;
    const QString station = elements.station < 0 ? QString() : QString::number(elements.station);
    const auto real = [](std::optional<double> number) {
        return number ? QString::number(*number, 'g', 17) : QString();
    };
    const bool isNumber = plc::isNumber(variable.type);
    const auto access = variable.access;
    return QStringList({quoted(variable.name), QString::number(elements.area),
                        plc::addressText(elements.area, elements.element), station,
                        QString::number(variable.count), plc::valueTypeWord(variable.type),
                        plc::wordOrderWord(variable.order), isNumber ? real(variable.scale) : QString(),
                        isNumber ? real(variable.offset) : QString(), quoted(variable.unit),
                        variable.digits < 0 ? QString() : QString::number(variable.digits),
                        real(variable.min), real(variable.max),
                        access == plc::Access::Unsaid     ? QString()
                        : access == plc::Access::ReadOnly ? QStringLiteral("r")
                                                          : QStringLiteral("rw"),
                        quoted(variable.comment)})
        .join(QLatin1Char(','))
        .toUtf8();
}

bool isSame(const ListedVariable& a, const ListedVariable& b)
{
    return a.name == b.name && a.elements.area == b.elements.area &&
           a.elements.element == b.elements.element && a.elements.count == b.elements.count &&
           a.elements.station == b.elements.station && a.type == b.type && a.count == b.count &&
           a.order == b.order && a.scale == b.scale && a.offset == b.offset && a.unit == b.unit &&
           a.digits == b.digits && a.min == b.min && a.max == b.max && a.access == b.access &&
           a.comment == b.comment;
}

// A list written anew from what was understood is understood in the same way.
void checkWayBack(const VariableList& list)
{
    QByteArray csv = longHeader;
    for (const ListedVariable& variable : list.variables)
        csv += '\n' + lineOf(variable);
    const VariableList again = plc::parseVariableList(csv);
    check(again.errors.isEmpty() && again.variables.size() == list.variables.size(),
          "what was understood can be written as a list without errors");
    for (std::size_t i = 0; i < list.variables.size(); ++i)
        check(isSame(list.variables[i], again.variables[i]), "a variable written anew is the same variable");
}

void checkCommandLine(const QString& text)
{
    QString error;
    const auto variable = plc::parseVariable(text, &error);
    if (!variable) {
        check(!error.isEmpty(), "a refused variable comes with a reason");
        return;
    }
    check(isInside(*variable), "a variable of the command line lies inside its area");
    const auto again = plc::parseVariable(plc::variableText(*variable), &error);
    check(again && again->area == variable->area && again->element == variable->element &&
              again->count == variable->count && again->station == variable->station,
          "the text of a variable names that variable");
}

void checkValues(int area, const QString& text)
{
    QString error;
    const auto values = plc::parseValues(area, text, &error);
    if (values)
        check(plc::valuesOfBytes(area, plc::bytesOfValues(area, *values)) == *values,
              "values pass through bytes unchanged");
    else
        check(!error.isEmpty(), "refused values come with a reason");
}

void checkList(const QByteArray& csv, int lines)
{
    const VariableList list = plc::parseVariableList(csv);
    for (const ListedVariable& variable : list.variables)
        checkVariable(variable);
    checkOrder(list, lines);
    checkErrors(list, lines);
    checkWayBack(list);
}

// A sign that a message has a meaning for must not have one in what the message quotes.
void checkPercentSigns(const QByteArray& csv)
{
    if (!csv.contains('%') || csv.contains('$'))
        return;
    const QStringList errors = plc::parseVariableList(csv).errors;
    QByteArray other = csv;
    other.replace('%', '$');
    const QStringList expected = plc::parseVariableList(other).errors;
    check(QString(errors.join(QLatin1Char('\n'))).replace(QLatin1Char('%'), QLatin1Char('$')) ==
              expected.join(QLatin1Char('\n')),
          "a percent sign is a character like any other");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray csv(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QList<QByteArray> lines = csv.split('\n');
    checkList(csv, lines.size());
    // Without its header no list has variables: most inputs get one.
    for (const char* header : {shortHeader, deadbandHeader, longHeader, semicolonHeader}) {
        const QByteArray withHeader = QByteArray(header) + '\n' + csv;
        checkList(withHeader, lines.size() + 1);
        checkPercentSigns(withHeader);
    }
    for (int i = 0; i < lines.size(); ++i) {
        checkCommandLine(QString::fromUtf8(lines.at(i)));
        checkValues(i % 15, QString::fromUtf8(lines.at(i)));
    }
    return 0;
}
