// SPDX-License-Identifier: MIT
#include "runtime/model/list_columns.h"

#include "runtime/model/counted.h"
#include "runtime/model/printable.h"

#include <cmath>
#include <iterator>

namespace plc
{

namespace
{

struct Field {
    QString text; ///< empty where the list has no such column
    QLatin1String column;
    bool decimalComma;
};

using Take = void (*)(const Field& field, ListedVariable* variable);

struct ColumnRow {
    const char* name;
    bool isNeeded;
    Take take; ///< \throws LineError
    const char* help;
};

/// \return the number in a field, \a whenEmpty for an empty one where that is allowed
int numberIn(const Field& field, int least, int most, std::optional<int> whenEmpty = std::nullopt)
{
    if (field.text.isEmpty() && whenEmpty)
        return *whenEmpty;
    bool ok = false;
    const int number = field.text.toInt(&ok, 10);
    if (!ok || number < least || number > most)
        throw LineError(
            QStringLiteral("\"%1\" is no %2; %3 to %4 is expected")
                .arg(excerpt(field.text), field.column, QString::number(least), QString::number(most)));
    return number;
}

void needNumbers(const Field& field, const ListedVariable& variable)
{
    if (!isNumber(variable.type))
        throw LineError(QStringLiteral("type %1 has no %2, only numbers have; leave the field empty")
                            .arg(valueTypeWord(variable.type), field.column));
}

/// \return a number with a fraction; nothing of an empty field
std::optional<double> realIn(const Field& field, const ListedVariable& variable)
{
    if (field.text.isEmpty())
        return std::nullopt;
    needNumbers(field, variable);
    QString text = field.text;
    if (field.decimalComma)
        text.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        throw LineError(QStringLiteral("\"%1\" is no %2; a number such as %3 is expected")
                            .arg(excerpt(field.text), field.column,
                                 field.decimalComma ? QStringLiteral("0,1") : QStringLiteral("0.1")));
    return number;
}

QString shownTextIn(const Field& field, int most)
{
    if (printable(field.text) != field.text)
        throw LineError(QStringLiteral("the %1 has a character that cannot be shown; letters, digits, signs "
                                       "and spaces are expected")
                            .arg(field.column));
    if (field.text.size() > most)
        throw LineError(QStringLiteral("the %1 has %2 characters; %3 are allowed")
                            .arg(field.column)
                            .arg(field.text.size())
                            .arg(most));
    return field.text.isEmpty() ? QString()
                                : field.text; // an empty one that was parsed has memory of its own
}

void takeName(const Field& field, ListedVariable* variable)
{
    if (field.text.isEmpty())
        throw LineError(QStringLiteral("the name is missing; it is what the value is shown under"));
    variable->name = shownTextIn(field, longestNameCharacters);
}

void takeArea(const Field& field, ListedVariable* variable)
{
    variable->elements.area = numberIn(field, 0, areaCount() - 1);
}

void takeAddress(const Field& field, ListedVariable* variable)
{
    QString error;
    const std::optional<int> element = parseAddress(variable->elements.area, field.text, &error);
    if (!element)
        throw LineError(error);
    variable->elements.element = *element;
}

void takeStation(const Field& field, ListedVariable* variable)
{
    variable->elements.station = numberIn(field, 0, lastStation, -1);
}

void takeCount(const Field& field, ListedVariable* variable)
{
    variable->count = numberIn(field, 1, areaSize(variable->elements.area), 1);
}

void takeType(const Field& field, ListedVariable* variable)
{
    const std::optional<ValueType> type = parseValueType(field.text);
    Variable& elements = variable->elements;
    if (!type || elementsOfType(*type, elements.area, 1) == 0)
        throw LineError(
            QStringLiteral("\"%1\" is no type of area %2; it holds %3")
                .arg(excerpt(field.text), QString::number(elements.area), valueTypesOfArea(elements.area)));
    variable->type = *type;
    elements.count = elementsOfType(*type, elements.area, variable->count);
    elements.valueElements = elementsOfType(*type, elements.area, 1);
    const int room = areaSize(elements.area) - elements.element;
    if (elements.count > room)
        throw LineError(
            QStringLiteral("%1 elements from %2 on run past the end of area %3; at most %4 are there")
                .arg(QString::number(elements.count), addressText(elements.area, elements.element),
                     QString::number(elements.area), QString::number(room)));
}

/// In these orders the letters of four characters lie in two words, which are one value: neither the variable nor a
/// request may end between them.
void pairWords(ListedVariable* variable)
{
    Variable& elements = variable->elements;
    const bool turnsWords = variable->order == WordOrder::Cdab || variable->order == WordOrder::Dcba;
    if (variable->type != ValueType::Text || !turnsWords || placesOfElement(elements.area) > 1)
        return;
    if (elements.count % 2 != 0)
        throw LineError(
            QStringLiteral("in order %1 four characters of a text lie in two words, and a count of %2 "
                           "ends in the midst of them; %3 is expected, or order ABCD or BADC, which go "
                           "word by word")
                .arg(wordOrderWord(variable->order), QString::number(variable->count),
                     QString::number(2 * (elements.count + 1))));
    elements.valueElements = 2;
}

void takeOrder(const Field& field, ListedVariable* variable)
{
    const std::optional<WordOrder> order = parseWordOrder(field.text);
    if (!order)
        throw LineError(QStringLiteral("\"%1\" is no order; %2 is expected, or nothing")
                            .arg(excerpt(field.text), wordOrderWords()));
    if (*order != WordOrder::Usual && !hasWordOrder(variable->type, variable->elements.area))
        throw LineError(
            QStringLiteral("type %1 lies in one word here and has no order; leave the field empty")
                .arg(valueTypeWord(variable->type)));
    variable->order = *order;
    pairWords(variable);
}

void takeScale(const Field& field, ListedVariable* variable)
{
    variable->scale = realIn(field, *variable).value_or(1);
    if (variable->scale == 0)
        throw LineError(QStringLiteral("the scale is 0, so that every value would be the same"));
}

void takeOffset(const Field& field, ListedVariable* variable)
{
    variable->offset = realIn(field, *variable).value_or(0);
}

void takeUnit(const Field& field, ListedVariable* variable)
{
    variable->unit = shownTextIn(field, longestUnitCharacters);
}

void takeDigits(const Field& field, ListedVariable* variable)
{
    if (!field.text.isEmpty())
        needNumbers(field, *variable);
    variable->digits = static_cast<qint8>(numberIn(field, 0, mostDigits, -1));
}

void takeMin(const Field& field, ListedVariable* variable)
{
    variable->min = realIn(field, *variable);
}

void takeMax(const Field& field, ListedVariable* variable)
{
    variable->max = realIn(field, *variable);
    if (variable->min && variable->max && *variable->min > *variable->max)
        throw LineError(QStringLiteral("min is above max, so that no value would lie between them"));
}

void takeAccess(const Field& field, ListedVariable* variable)
{
    const bool isRead = field.text.compare(QLatin1String("r"), Qt::CaseInsensitive) == 0;
    const bool isWritten = field.text.compare(QLatin1String("rw"), Qt::CaseInsensitive) == 0;
    if (!field.text.isEmpty() && !isRead && !isWritten)
        throw LineError(
            QStringLiteral("\"%1\" is no access; r or rw is expected, or nothing").arg(excerpt(field.text)));
    if (isWritten && !areaOf(variable->elements.area).isWritable)
        throw LineError(
            QStringLiteral("the access is rw, but area %1 can only be read").arg(variable->elements.area));
    variable->access = isRead ? Access::ReadOnly : isWritten ? Access::ReadWrite : Access::Unsaid;
}

void takeDeadband(const Field& field, ListedVariable* variable)
{
    variable->deadband = realIn(field, *variable).value_or(0);
    if (variable->deadband < 0)
        throw LineError(
            QStringLiteral("\"%1\" is no deadband; 0 or more is expected").arg(excerpt(field.text)));
}

void takeComment(const Field& field, ListedVariable* variable)
{
    variable->comment = shownTextIn(field, longestLineBytes);
}

// In the order in which they are taken: what a field means may depend on those above it.
const ColumnRow columnRows[] = {
    {"name", true, takeName, "what the value is shown under; no other line has it"},
    {"area", true, takeArea, "0 to 14"},
    {"address", true, takeAddress, "as it is typed behind AREA:"},
    {"station", false, takeStation, "0 to 255; empty: that of --station"},
    {"count", false, takeCount, "values, of text characters; empty: 1"},
    {"type", true, takeType, "what the elements mean"},
    {"order", false, takeOrder, "of the bytes of values longer than a word, explained below"},
    {"scale", false, takeScale, "what is shown is the controller's number x scale + offset; empty: 1"},
    {"offset", false, takeOffset, "empty: 0"},
    {"unit", false, takeUnit, "shown behind the value"},
    {"digits", false, takeDigits, "behind the decimal point, 0 to 15; empty: as many as the number has"},
    {"min", false, takeMin, "what is shown below it is marked, and nothing below it is written"},
    {"max", false, takeMax, "the same above it"},
    {"access", false, takeAccess,
     "r: never written; rw or empty: written where the area allows it; plcgateway writes rw only"},
    {"deadband", false, takeDeadband, "plcgateway: a change by no more is not told; empty: 0"},
    {"comment", false, takeComment, "for people"},
};

QString columnsText()
{
    return listColumns().join(QStringLiteral(", "));
}

} // namespace

QStringList listColumns()
{
    QStringList names;
    for (const ColumnRow& row : columnRows)
        names << QLatin1String(row.name);
    return names;
}

QString listGuide()
{
    const int widest = 8;
    QString text;
    for (const ColumnRow& row : columnRows)
        text += QStringLiteral("  %1%2  %3\n")
                    .arg(QLatin1String(row.name), -widest)
                    .arg(QLatin1Char(row.isNeeded ? '*' : ' '))
                    .arg(QLatin1String(row.help));
    return text +
           QStringLiteral(
               "  (* is needed; the others may be left out.)\n"
               "An order names the bytes of a 32-bit value from the most significant one (A) to the least "
               "(D), "
               "of a text\nits characters, as they go over the wire: the high byte of a word first, words by "
               "rising address. ABCD has\nthe high word first, CDAB the low word, as numbers without an "
               "order "
               "have it; BADC and DCBA have the bytes\nof each word exchanged besides, BADC as text without "
               "an "
               "order has it. 64-bit values are alike.\n");
}

ListColumns::ListColumns(const QStringList& names, bool decimalComma)
    : m_names(names), m_fieldOf(std::size(columnRows), -1), m_decimalComma(decimalComma)
{
    const QStringList known = listColumns();
    for (int field = 0; field < names.size(); ++field) {
        const int column = known.indexOf(names.at(field).toLower());
        if (column < 0)
            throw LineError(
                QStringLiteral("the first line must name the columns, and \"%1\" is none of them: %2")
                    .arg(excerpt(names.at(field)), columnsText()));
        if (m_fieldOf[static_cast<std::size_t>(column)] >= 0)
            throw LineError(QStringLiteral("the column %1 is there twice").arg(known.at(column)));
        m_fieldOf[static_cast<std::size_t>(column)] = field;
    }
    for (std::size_t column = 0; column < std::size(columnRows); ++column) {
        if (columnRows[column].isNeeded && m_fieldOf[column] < 0)
            throw LineError(QStringLiteral("the first line must name the columns, and %1 is missing among "
                                           "them, which every list needs; there may be %2")
                                .arg(QLatin1String(columnRows[column].name), columnsText()));
    }
}

ListedVariable ListColumns::variableOf(const QStringList& fields) const
{
    if (fields.size() != m_names.size())
        throw LineError(QStringLiteral("it has %1; %2 are expected: %3")
                            .arg(counted(fields.size(), "field"))
                            .arg(m_names.size())
                            .arg(m_names.join(m_decimalComma ? QLatin1Char(';') : QLatin1Char(','))));
    ListedVariable variable;
    for (std::size_t column = 0; column < std::size(columnRows); ++column) {
        const ColumnRow& row = columnRows[column];
        const int field = m_fieldOf[column];
        row.take({field < 0 ? QString() : fields.at(field), QLatin1String(row.name), m_decimalComma},
                 &variable);
    }
    return variable;
}

} // namespace plc
