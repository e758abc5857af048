// SPDX-License-Identifier: MIT
// Lists of variables, written here as a person may write them and read again.

#include "properties/property.h"
#include "runtime/model/variable_list.h"

#include <cmath>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace plc
{

namespace
{

// All that a list says of a variable.
std::string described(const ListedVariable& variable)
{
    const auto real = [](std::optional<double> number) {
        return number ? QString::number(*number, 'g', 17).toStdString() : std::string("none");
    };
    std::ostringstream out;
    out << variable.name.text().toStdString() << " = " << variableText(variable.elements).toStdString()
        << " of " << variable.count << ' ' << valueTypeWord(variable.type).toStdString() << ' '
        << wordOrderWord(variable.order).toStdString() << " x " << real(variable.scale) << " + "
        << real(variable.offset) << ' ' << variable.unit.toStdString() << ", digits " << variable.digits
        << ", from " << real(variable.min) << " to " << real(variable.max) << ", access "
        << static_cast<int>(variable.access) << ", deadband " << real(variable.deadband) << ": "
        << variable.comment.toStdString();
    return out.str();
}

std::vector<std::string> described(const std::vector<ListedVariable>& variables)
{
    std::vector<std::string> texts;
    for (const ListedVariable& variable : variables)
        texts.push_back(described(variable));
    return texts;
}

// How the file is written.
struct Style {
    QChar separator;
    bool quotes;  // around every field
    QString end;  // of lines
    bool remarks; // blank lines and remarks between the lines
};

// Printable, with what has a meaning in such files.
rc::Gen<QString> texts(int longest)
{
    const auto character = rc::gen::weightedOneOf<ushort>(
        {{6, rc::gen::cast<ushort>(rc::gen::inRange('a', 'z'))},
         {2, rc::gen::cast<ushort>(rc::gen::inRange('!', '~'))},
         {2, rc::gen::element<ushort>(',', ';', '"', '#', '%', ' ', 0xB0, 0xE4, 0x20AC)}});
    return rc::gen::map(
        test::upTo<std::vector<ushort>>(longest, character), [](const std::vector<ushort>& characters) {
            const QString text = QString::fromUtf16(characters.data(), static_cast<int>(characters.size()));
            return text.trimmed(); // spaces around a field are not part of it
        });
}

double anyReal()
{
    return *rc::gen::oneOf(rc::gen::map(rc::gen::inRange(-1000, 1000), [](int n) { return n / 8.0; }),
                           rc::gen::map(rc::gen::arbitrary<int>(), [](int n) { return n / 10.0; }),
                           rc::gen::map(rc::gen::inRange(1, 1000), [](int n) { return 1e-9 * n; }));
}

void drawNumbers(ListedVariable* variable)
{
    if (!isNumber(variable->type))
        return;
    variable->scale = anyReal();
    if (variable->scale == 0)
        variable->scale = 1;
    variable->offset = anyReal();
    variable->unit = *texts(longestUnitCharacters);
    variable->digits = static_cast<qint8>(*rc::gen::inRange(-1, mostDigits + 1));
    const double limit = anyReal();
    if (*rc::gen::arbitrary<bool>())
        variable->min = limit;
    if (*rc::gen::arbitrary<bool>())
        variable->max = limit + std::fabs(anyReal());
    variable->deadband = std::fabs(anyReal());
}

// Every type in every area that can hold it.
std::vector<std::pair<ValueType, int>> typesAndAreas()
{
    std::vector<std::pair<ValueType, int>> pairs;
    for (int type = 0; type <= static_cast<int>(ValueType::Bcd32); ++type)
        for (int area = 0; area < 15; ++area)
            if (elementsOfType(static_cast<ValueType>(type), area, 1) > 0)
                pairs.emplace_back(static_cast<ValueType>(type), area);
    return pairs;
}

ListedVariable anyVariable(int serial)
{
    ListedVariable variable;
    variable.name = *texts(20) + QString::number(serial);
    std::tie(variable.type, variable.elements.area) = *rc::gen::elementOf(typesAndAreas());
    variable.count = *rc::gen::inRange(1, 6) * 4; // texts of some orders have whole pairs of words only
    if (variable.type != ValueType::Text)
        variable.count -= *rc::gen::inRange(0, 4);
    variable.elements.count = elementsOfType(variable.type, variable.elements.area, variable.count);
    variable.elements.element =
        *rc::gen::inRange(0, areaSize(variable.elements.area) - variable.elements.count + 1);
    variable.elements.station = *rc::gen::inRange(-1, lastStation + 1);
    if (hasWordOrder(variable.type, variable.elements.area))
        variable.order = *rc::gen::element(WordOrder::Usual, WordOrder::Abcd, WordOrder::Cdab,
                                           WordOrder::Badc, WordOrder::Dcba);
    if (variable.elements.area != 0) // which can only be read
        variable.access = *rc::gen::element(Access::Unsaid, Access::ReadOnly, Access::ReadWrite);
    variable.comment = *texts(30);
    drawNumbers(&variable);
    return variable;
}

QString field(const QString& text, const Style& style)
{
    const bool needed =
        text.contains(style.separator) || text.contains(QLatin1Char('"')) || text.startsWith('#');
    if (!style.quotes && !needed)
        return text;
    return '"' + QString(text).replace('"', "\"\"") + '"';
}

QString real(double number, const Style& style)
{
    const QString text = QString::number(number, 'g', 17);
    return style.separator == ';' ? QString(text).replace('.', ',') : text;
}

QString line(const ListedVariable& variable, const Style& style)
{
    const Variable& elements = variable.elements;
    const bool number = isNumber(variable.type);
    const char* const accesses[] = {"", "r", "rw"};
    const QStringList fields = {variable.comment,
                                variable.min ? real(*variable.min, style) : QString(),
                                variable.max ? real(*variable.max, style) : QString(),
                                variable.name,
                                QString::number(elements.area),
                                addressText(elements.area, elements.element),
                                elements.station < 0 ? QString() : QString::number(elements.station),
                                QString::number(variable.count),
                                valueTypeWord(variable.type),
                                wordOrderWord(variable.order),
                                number ? real(variable.scale, style) : QString(),
                                number ? real(variable.offset, style) : QString(),
                                variable.unit,
                                variable.digits < 0 ? QString() : QString::number(variable.digits),
                                accesses[static_cast<int>(variable.access)],
                                number && variable.deadband > 0 ? real(variable.deadband, style) : QString()};
    QStringList written;
    for (const QString& each : fields)
        written << field(each, style);
    return written.join(style.separator);
}

QByteArray file(const std::vector<ListedVariable>& variables, const Style& style)
{
    QString text =
        QString("comment,min,max,name,area,address,station,count,type,order,scale,offset,unit,digits,access,"
                "deadband")
            .replace(',', style.separator) +
        style.end;
    for (const ListedVariable& variable : variables) {
        if (style.remarks)
            text += style.end + "# a remark" + style.separator + style.end;
        text += line(variable, style) + style.end;
    }
    return text.toUtf8();
}

TEST(Lists, ThatAreWrittenAreReadAsTheSame)
{
    test::holds(200, [] {
        const Style style = {*rc::gen::element(QChar(','), QChar(';')), *rc::gen::arbitrary<bool>(),
                             *rc::gen::element(QString("\n"), QString("\r\n")), *rc::gen::arbitrary<bool>()};
        std::vector<ListedVariable> variables;
        const int count = *rc::gen::inRange(1, 8);
        for (int i = 0; i < count; ++i)
            variables.push_back(anyVariable(i));
        const QByteArray csv = file(variables, style);
        RC_LOG() << csv.toStdString();
        const VariableList list = parseVariableList(csv);
        RC_LOG() << list.errors.join('\n').toStdString();
        RC_ASSERT(list.errors.isEmpty());
        RC_ASSERT(described(list.variables) == described(variables));
    });
}

TEST(Lists, NameVariablesByTextsThatNameThemAgain)
{
    test::holds(200, [] {
        Variable variable;
        variable.area = *rc::gen::inRange(0, 15);
        variable.count = *rc::gen::inRange(1, 200);
        variable.element = *rc::gen::inRange(0, areaSize(variable.area) - variable.count + 1);
        variable.station = *rc::gen::inRange(-1, lastStation + 1);
        const QString text = variableText(variable);
        RC_LOG() << text.toStdString();
        QString error;
        const auto again = parseVariable(text, &error);
        RC_ASSERT(again.has_value());
        RC_ASSERT(again->area == variable.area);
        RC_ASSERT(again->element == variable.element);
        RC_ASSERT(again->count == variable.count);
        RC_ASSERT(again->station == variable.station);
    });
}

} // namespace

} // namespace plc
