#include "runtime/model/variable_list.h"

#include "runtime/model/printable.h"

#include <QFile>
#include <QHash>

#include <csv.h>

#include <memory>
#include <stdexcept>

namespace plc
{

namespace
{

enum Column { NameColumn, AreaColumn, AddressColumn, StationColumn, CountColumn, TypeColumn, ColumnCount };

const char* const columnNames[ColumnCount] = {"name", "area", "address", "station", "count", "type"};

/// What is wrong with a line and what is expected instead.
class LineError : public std::runtime_error
{
public:
    explicit LineError(const QString& words) : std::runtime_error(words.toStdString()) {}
};

void addField(void* field, std::size_t size, void* fields)
{
    const QString text = QString::fromUtf8(static_cast<const char*>(field), static_cast<int>(size));
    static_cast<QStringList*>(fields)->append(text.trimmed());
}

void endRow(int, void*) {}

/// \return the fields of one line
/// \throws LineError when its quotes are not in order
QStringList fieldsOf(const QByteArray& line)
{
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0)
        throw std::bad_alloc();
    const std::unique_ptr<csv_parser, void (*)(csv_parser*)> freeAtEnd(&parser, csv_free);
    QStringList fields;
    const auto size = static_cast<std::size_t>(line.size());
    const bool parsed = csv_parse(&parser, line.constData(), size, addField, endRow, &fields) == size &&
                        csv_fini(&parser, addField, endRow, &fields) == 0;
    if (!parsed)
        throw LineError(
            QStringLiteral("its quotes do not match; a field with a comma stands in double quotes, "
                           "a quote in it is doubled"));
    return fields;
}

QString header()
{
    QStringList names;
    for (const char* name : columnNames)
        names << QLatin1String(name);
    return names.join(QLatin1Char(','));
}

void checkHeader(const QStringList& fields)
{
    if (fields.join(QLatin1Char(',')).compare(header(), Qt::CaseInsensitive) != 0)
        throw LineError(QStringLiteral("the first line must name the columns: %1").arg(header()));
}

/// \return the number in a field, \a whenEmpty for an empty one where that is allowed
int numberIn(const QStringList& fields, Column column, int least, int most,
             std::optional<int> whenEmpty = std::nullopt)
{
    const QString& text = fields.at(column);
    if (text.isEmpty() && whenEmpty)
        return *whenEmpty;
    bool ok = false;
    const int number = text.toInt(&ok, 10);
    if (!ok || number < least || number > most)
        throw LineError(QStringLiteral("\"%1\" is no %2; %3 to %4 is expected")
                            .arg(excerpt(text), QLatin1String(columnNames[column]), QString::number(least),
                                 QString::number(most)));
    return number;
}

int elementIn(const QStringList& fields, int area)
{
    QString error;
    const std::optional<int> element = parseAddress(area, fields.at(AddressColumn), &error);
    if (!element)
        throw LineError(error);
    return *element;
}

ValueType typeIn(const QStringList& fields, int area)
{
    const std::optional<ValueType> type = parseValueType(fields.at(TypeColumn));
    if (!type || elementsOfType(*type, area, 1) == 0)
        throw LineError(
            QStringLiteral("\"%1\" is no type of area %2; it holds %3")
                .arg(excerpt(fields.at(TypeColumn)), QString::number(area), valueTypesOfArea(area)));
    return *type;
}

QString nameIn(const QStringList& fields)
{
    const QString& name = fields.at(NameColumn);
    if (name.isEmpty())
        throw LineError(QStringLiteral("the name is missing; it is what the value is shown under"));
    if (printable(name) != name)
        throw LineError(
            QStringLiteral("the name has a character that cannot be shown; letters, digits, signs "
                           "and spaces are expected"));
    if (name.size() > longestNameCharacters)
        throw LineError(QStringLiteral("the name has %1 characters; %2 are allowed")
                            .arg(name.size())
                            .arg(longestNameCharacters));
    return name;
}

ListedVariable variableOf(const QStringList& fields)
{
    if (fields.size() != ColumnCount)
        throw LineError(QStringLiteral("it has %1 fields; %2 are expected: %3")
                            .arg(fields.size())
                            .arg(ColumnCount)
                            .arg(header()));
    ListedVariable variable;
    variable.name = nameIn(fields);
    Variable& elements = variable.elements;
    elements.area = numberIn(fields, AreaColumn, 0, areaCount() - 1);
    elements.element = elementIn(fields, elements.area);
    elements.station = numberIn(fields, StationColumn, 0, lastStation, -1);
    variable.count = numberIn(fields, CountColumn, 1, areaSize(elements.area), 1);
    variable.type = typeIn(fields, elements.area);
    elements.count = elementsOfType(variable.type, elements.area, variable.count);
    elements.valueElements = elementsOfType(variable.type, elements.area, 1);
    if (elements.count > areaSize(elements.area) - elements.element)
        throw LineError(
            QStringLiteral("%1 elements from %2 on run past the end of area %3; at most %4 are there")
                .arg(elements.count)
                .arg(fields.at(AddressColumn))
                .arg(elements.area)
                .arg(areaSize(elements.area) - elements.element));
    return variable;
}

/// A character that nobody sees may change what is meant: text behind a zero byte is lost to some programs.
void checkCharacters(const QByteArray& line)
{
    for (int at = 0; at < line.size(); ++at) {
        const auto byte = static_cast<unsigned char>(line.at(at));
        if ((byte < ' ' && byte != '\t') || byte == 0x7F)
            throw LineError(
                QStringLiteral("character %1 is a control character (0x%2); text in UTF-8 is expected")
                    .arg(at + 1)
                    .arg(static_cast<uint>(byte), 2, 16, QLatin1Char('0')));
    }
}

void checkLength(const QByteArray& line)
{
    if (line.size() > longestLineBytes)
        throw LineError(
            QStringLiteral("it has %1 bytes; %2 are allowed").arg(line.size()).arg(longestLineBytes));
}

/// Goes through the lines and collects variables and errors.
class Reader
{
public:
    explicit Reader(const VariableCheck& check) : m_check(check) {}

    void read(const QByteArray& line)
    {
        ++m_line;
        const QByteArray text = line.trimmed();
        try {
            checkLength(text);
            checkCharacters(text);
            if (!text.isEmpty() && !text.startsWith('#'))
                readFields(fieldsOf(text));
        } catch (const LineError& error) {
            report(QString::fromStdString(error.what()), text);
        }
    }

    bool hasEnough() const { return m_list.errors.size() + m_unsaid >= mostWrongLines; }

    VariableList finish()
    {
        if (!m_hasHeader)
            m_list.errors << QStringLiteral("the list is empty; its first line must name the columns: %1")
                                 .arg(header());
        if (m_unsaid > 0)
            m_list.errors << QStringLiteral("and %1 more wrong lines%2")
                                 .arg(m_unsaid)
                                 .arg(hasEnough() ? QStringLiteral("; what is behind them was not looked at")
                                                  : QString());
        return m_list;
    }

private:
    void readFields(const QStringList& fields)
    {
        if (!m_hasHeader) {
            m_hasHeader = true;
            return checkHeader(fields);
        }
        ListedVariable variable = variableOf(fields);
        variable.line = m_line;
        const int before = m_lineOfName.value(variable.name, 0);
        if (before != 0)
            throw LineError(QStringLiteral("the name \"%1\" is taken by line %2; each needs its own")
                                .arg(variable.name, QString::number(before)));
        if (m_list.variables.size() == mostListedVariables)
            throw LineError(
                QStringLiteral("%1 variables are above it; no list may have more").arg(mostListedVariables));
        const QString words = m_check ? m_check(variable) : QString();
        if (!words.isEmpty())
            throw LineError(words);
        m_lineOfName.insert(variable.name, m_line);
        m_list.variables.push_back(variable);
    }

    void report(const QString& words, const QByteArray& text)
    {
        if (m_list.errors.size() >= mostListErrors) {
            ++m_unsaid;
            return;
        }
        m_list.errors << QStringLiteral("line %1: %2\n    %3")
                             .arg(m_line)
                             .arg(printable(words),
                                  excerpt(QString::fromUtf8(text.constData(),
                                                            qMin(text.size(), longestLineBytes))));
    }

    const VariableCheck m_check;
    VariableList m_list;
    QHash<QString, int> m_lineOfName;
    int m_line = 0;
    int m_unsaid = 0; // wrong lines
    bool m_hasHeader = false;
};

} // namespace

VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check)
{
    const QByteArray byteOrderMark("\xEF\xBB\xBF");
    Reader reader(check);
    int begin = csv.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    while (begin <= csv.size() &&
           !reader.hasEnough()) { // not split(): so many lines would need many times the memory of the file
        const int found = csv.indexOf('\n', begin);
        const int end = found < 0 ? csv.size() : found;
        reader.read(QByteArray::fromRawData(csv.constData() + begin, end - begin));
        begin = end + 1;
    }
    return reader.finish();
}

VariableList readVariableList(const QString& path, const VariableCheck& check)
{
    VariableList list;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        list.errors << QStringLiteral("cannot read it: %1").arg(file.errorString());
        return list;
    }
    const QByteArray csv = file.read(longestListBytes + 1);
    if (csv.size() <= longestListBytes && file.error() == QFileDevice::NoError)
        return parseVariableList(csv, check);
    list.errors << (file.error() != QFileDevice::NoError
                        ? QStringLiteral("cannot read it: %1").arg(file.errorString())
                        : QStringLiteral("it is longer than %1 MiB; a list of variables is expected")
                              .arg(longestListBytes / 1024 / 1024));
    return list;
}

} // namespace plc
