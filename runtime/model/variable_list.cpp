// SPDX-License-Identifier: MIT
#include "runtime/model/variable_list.h"

#include "runtime/model/list_columns.h"
#include "runtime/model/printable.h"

#include <QFile>
#include <QHash>

#include <csv.h>

#include <algorithm>
#include <memory>
#include <new>

namespace plc
{

namespace
{

const char comma = ',';
const char semicolon = ';';

void addField(void* field, std::size_t size, void* fields)
{
    const QString text = QString::fromUtf8(static_cast<const char*>(field), static_cast<int>(size));
    static_cast<QStringList*>(fields)->append(text.trimmed());
}

void endRow(int, void*) {}

/// \return the fields of one line
/// \throws LineError when its quotes are not in order
QStringList fieldsOf(const QByteArray& line, char separator)
{
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0)
        throw std::bad_alloc();
    const std::unique_ptr<csv_parser, void (*)(csv_parser*)> freeAtEnd(&parser, csv_free);
    csv_set_delim(&parser, static_cast<unsigned char>(separator));
    QStringList fields;
    const auto size = static_cast<std::size_t>(line.size());
    const bool parsed = csv_parse(&parser, line.constData(), size, addField, endRow, &fields) == size &&
                        csv_fini(&parser, addField, endRow, &fields) == 0;
    if (!parsed)
        throw LineError(
            QStringLiteral("its quotes do not match; a field with a %1 stands in double quotes, "
                           "a quote in it is doubled")
                .arg(separator == semicolon ? QStringLiteral("semicolon") : QStringLiteral("comma")));
    return fields;
}

/// Spreadsheets write rows without anything as separators alone.
bool isBlank(const QStringList& fields)
{
    return std::all_of(fields.begin(), fields.end(), [](const QString& field) { return field.isEmpty(); });
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
                readLine(text);
        } catch (const LineError& error) {
            report(QString::fromStdString(error.what()), text);
        }
    }

    /// \return true when nothing behind what was read is to be looked at
    bool isOver() const { return m_isOver || hasEnough(); }

    VariableList finish()
    {
        if (!m_hasHeader)
            m_list.errors << QStringLiteral("the list is empty; its first line must name the columns: %1")
                                 .arg(listColumns().join(QStringLiteral(", ")));
        if (m_unsaid > 0)
            m_list.errors << QStringLiteral("and %1 more wrong lines%2")
                                 .arg(m_unsaid)
                                 .arg(hasEnough() ? QStringLiteral("; what is behind them was not looked at")
                                                  : QString());
        return m_list;
    }

private:
    void readLine(const QByteArray& text)
    {
        if (!m_hasHeader)
            return readHeader(text);
        const QStringList fields = fieldsOf(text, m_separator);
        if (!isBlank(fields))
            add(m_columns->variableOf(fields));
    }

    /// A list whose columns are not known is not looked at any further.
    void readHeader(const QByteArray& text)
    {
        m_hasHeader = true;
        m_separator = text.contains(semicolon) ? semicolon : comma;
        m_isOver = true;
        m_columns.emplace(fieldsOf(text, m_separator), m_separator == semicolon);
        m_isOver = false;
    }

    void add(ListedVariable variable)
    {
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

    bool hasEnough() const { return m_list.errors.size() + m_unsaid >= mostWrongLines; }

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
    bool m_isOver = false;
    char m_separator = comma;
    std::optional<ListColumns> m_columns; // there are none before the header
};

} // namespace

VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check)
{
    const QByteArray byteOrderMark("\xEF\xBB\xBF");
    Reader reader(check);
    int begin = csv.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    while (begin <= csv.size() &&
           !reader.isOver()) { // not split(): so many lines would need many times the memory of the file
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
