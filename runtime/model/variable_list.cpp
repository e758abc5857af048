// SPDX-License-Identifier: MIT
#include "runtime/model/variable_list.h"

#include "runtime/model/list_columns.h"
#include "runtime/model/printable.h"
#include "runtime/model/utf8.h"

#include <QFile>
#include <QHash>
#include <QSet>

#include <csv.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace plc
{

namespace
{

const char comma = ',';
const char semicolon = ';';
const int pieceBytes = 256 * 1024; // of a file, that are read at once

/// The fields of one line after the other.
class FieldReader
{
public:
    explicit FieldReader(char separator) : m_separator(separator) { begin(); }
    ~FieldReader() { csv_free(&m_parser); }
    FieldReader(const FieldReader&) = delete;
    FieldReader& operator=(const FieldReader&) = delete;

    /// \throws LineError when the quotes of \a line are not in order
    const QStringList& fieldsOf(const QByteArray& line)
    {
        m_fields.clear();
        const auto size = static_cast<std::size_t>(line.size());
        const bool parsed = csv_parse(&m_parser, line.constData(), size, add, end, &m_fields) == size &&
                            csv_fini(&m_parser, add, end, &m_fields) == 0;
        if (parsed)
            return m_fields;
        csv_free(&m_parser);
        begin();
        throw LineError(
            QStringLiteral("its quotes do not match; a field with a %1 stands in double quotes, "
                           "a quote in it is doubled")
                .arg(m_separator == semicolon ? QStringLiteral("semicolon") : QStringLiteral("comma")));
    }

private:
    static void add(void* field, std::size_t size, void* fields)
    {
        const QString text = QString::fromUtf8(static_cast<const char*>(field), static_cast<int>(size));
        static_cast<QStringList*>(fields)->append(text.trimmed());
    }

    static void end(int, void*) {}

    void begin()
    {
        if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI) != 0)
            throw std::bad_alloc();
        csv_set_delim(&m_parser, static_cast<unsigned char>(m_separator));
    }

    const char m_separator;
    csv_parser m_parser;
    QStringList m_fields;
};

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

/// What is no UTF-8 would be shown as something else, and names would be the same that are not.
void checkEncoding(const QByteArray& line)
{
    const int wrong = firstNotUtf8(line);
    if (wrong >= 0)
        throw LineError(
            QStringLiteral("byte %1 is no UTF-8 (0x%2); text in UTF-8 is expected")
                .arg(wrong + 1)
                .arg(static_cast<uint>(static_cast<unsigned char>(line.at(wrong))), 2, 16, QLatin1Char('0')));
}

void checkLength(qint64 size)
{
    if (size > longestLineBytes)
        throw LineError(QStringLiteral("it has %1 bytes; %2 are allowed").arg(size).arg(longestLineBytes));
}

/// Which variable of a list has a name. A QHash would take as much room as the variables.
class NameIndex
{
public:
    explicit NameIndex(const std::vector<ListedVariable>& variables) : m_variables(variables) {}

    /// \return null when there is none
    const ListedVariable* find(const SmallText& name) const
    {
        for (std::size_t slot = slotOf(name); !m_slots.empty() && m_slots[slot] != 0; slot = behind(slot)) {
            const ListedVariable& variable = m_variables[m_slots[slot] - 1];
            if (variable.name == name)
                return &variable;
        }
        return nullptr;
    }

    /// The last of the variables.
    void add()
    {
        if (m_variables.size() * 2 > m_slots.size())
            grow();
        else
            put(m_variables.size());
    }

private:
    std::size_t behind(std::size_t slot) const { return slot + 1 == m_slots.size() ? 0 : slot + 1; }

    /// With the process's own seed, so that no list is made to have all names in one place.
    std::size_t slotOf(const SmallText& name) const
    {
        return m_slots.empty() ? 0 : qHash(name.utf8(), m_seed) % m_slots.size();
    }

    void put(std::size_t number)
    {
        std::size_t slot = slotOf(m_variables[number - 1].name);
        while (m_slots[slot] != 0)
            slot = behind(slot);
        m_slots[slot] = static_cast<quint32>(number);
    }

    void grow()
    {
        const std::size_t size = std::max<std::size_t>(64, m_slots.size() * 2);
        m_slots = std::vector<quint32>();
        m_slots.resize(size);
        for (std::size_t number = 1; number <= m_variables.size(); ++number)
            put(number);
    }

    const std::vector<ListedVariable>& m_variables;
    const uint m_seed = static_cast<uint>(qGlobalQHashSeed());
    std::vector<quint32> m_slots; // 0: empty; else the place in m_variables, from 1 on
};

/// Goes through the lines and collects variables and errors.
class Reader
{
public:
    explicit Reader(const VariableCheck& check) : m_check(check) {}

    /// \param text of a line, without blanks around it; of one that is too long only the beginning
    /// \param size of all of it
    void read(const QByteArray& text, qint64 size)
    {
        ++m_line;
        try {
            checkLength(size);
            checkCharacters(text);
            checkEncoding(text);
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
        return std::move(m_list);
    }

private:
    void readLine(const QByteArray& text)
    {
        if (!m_hasHeader)
            return readHeader(text);
        const QStringList& fields = m_fields->fieldsOf(text);
        if (!isBlank(fields))
            add(m_columns->variableOf(fields));
    }

    /// A list whose columns are not known is not looked at any further.
    void readHeader(const QByteArray& text)
    {
        m_hasHeader = true;
        const char separator = text.contains(semicolon) ? semicolon : comma;
        m_isOver = true;
        m_fields.emplace(separator);
        m_columns.emplace(m_fields->fieldsOf(text), separator == semicolon);
        m_isOver = false;
    }

    void add(ListedVariable variable)
    {
        variable.line = m_line;
        if (const ListedVariable* const before = m_names.find(variable.name))
            throw LineError(QStringLiteral("the name \"%1\" is taken by line %2; each needs its own")
                                .arg(variable.name, QString::number(before->line)));
        if (m_list.variables.size() == mostListedVariables)
            throw LineError(
                QStringLiteral("%1 variables are above it; no list may have more").arg(mostListedVariables));
        const QString words = m_check ? m_check(variable) : QString();
        if (!words.isEmpty())
            throw LineError(words);
        shareTexts(&variable);
        m_list.variables.push_back(std::move(variable));
        m_names.add();
    }

    /// Many variables have the same unit, and some the comment of the one above.
    void shareTexts(ListedVariable* variable)
    {
        if (!variable->unit.isEmpty())
            variable->unit = *m_units.insert(variable->unit);
        if (!m_list.variables.empty() && m_list.variables.back().comment == variable->comment)
            variable->comment = m_list.variables.back().comment;
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
                             .arg(printable(words), excerpt(QString::fromUtf8(text)));
    }

    const VariableCheck m_check;
    VariableList m_list;
    NameIndex m_names{m_list.variables};
    QSet<QString> m_units;
    int m_line = 0;
    int m_unsaid = 0; // wrong lines
    bool m_hasHeader = false;
    bool m_isOver = false;
    std::optional<FieldReader> m_fields; // as the next: not before the header
    std::optional<ListColumns> m_columns;
};

bool isBlankByte(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// Cuts a file, which comes in pieces, into lines. Of a line that is too long no more is kept than is told of it.
class LineCutter
{
public:
    explicit LineCutter(Reader* reader) : m_reader(reader) {}

    void take(const QByteArray& piece)
    {
        int begin = 0;
        for (int end = piece.indexOf('\n'); end >= 0; end = piece.indexOf('\n', begin)) {
            const QByteArray rest = QByteArray::fromRawData(piece.constData() + begin, end - begin);
            begin = end + 1;
            if (m_kept.isEmpty() && rest.size() <= longestLineBytes)
                give(rest.trimmed(), 0);
            else
                endLine(rest);
        }
        keep(piece.constData() + begin, piece.size() - begin);
    }

    void finish() { endLine(QByteArray()); }

private:
    void endLine(const QByteArray& rest)
    {
        keep(rest.constData(), rest.size());
        // Blanks at its end are none of its bytes.
        const bool isAllBlank = m_blanks == m_dropped;
        give(isAllBlank ? m_kept.trimmed() : m_kept, m_dropped - m_blanks);
        m_kept.resize(0);
        m_dropped = m_blanks = 0;
    }

    void give(const QByteArray& text, qint64 dropped)
    {
        if (!m_reader->isOver())
            m_reader->read(text, text.size() + dropped);
    }

    void keep(const char* bytes, int size)
    {
        const char* const end = bytes + size;
        if (m_kept.isEmpty())
            bytes = std::find_if_not(bytes, end, isBlankByte);
        const auto room = static_cast<std::ptrdiff_t>(longestLineBytes - m_kept.size());
        const char* const behind = bytes + std::min(room, end - bytes);
        m_kept.append(bytes, static_cast<int>(behind - bytes));
        if (behind == end)
            return;
        const char* last = end;
        while (last != behind && isBlankByte(last[-1]))
            --last;
        m_blanks = (last == behind ? m_blanks : 0) + (end - last);
        m_dropped += end - behind;
    }

    Reader* const m_reader;
    QByteArray m_kept;    // of a line whose end has not come
    qint64 m_dropped = 0; // bytes of it that were not kept
    qint64 m_blanks = 0;  // of these the last ones, which are blank
};

QByteArray withoutByteOrderMark(const QByteArray& text)
{
    const QByteArray byteOrderMark("\xEF\xBB\xBF");
    return text.startsWith(byteOrderMark) ? text.mid(byteOrderMark.size()) : text;
}

/// \return as many bytes as there are, up to \a size: a pipe gives them as they come
QByteArray pieceOf(QFile* file, int size)
{
    QByteArray piece = file->read(size);
    while (!piece.isEmpty() && piece.size() < size) {
        const QByteArray more = file->read(size - piece.size());
        if (more.isEmpty())
            break;
        piece += more;
    }
    return piece;
}

VariableList failed(const QString& words)
{
    VariableList list;
    list.errors << words;
    return list;
}

} // namespace

VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check)
{
    Reader reader(check);
    LineCutter lines(&reader);
    lines.take(withoutByteOrderMark(csv));
    lines.finish();
    return reader.finish();
}

/// What is behind a line from which on nothing is looked at is read all the same: the file may be too long.
VariableList readVariableList(const QString& path, const VariableCheck& check)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failed(QStringLiteral("cannot read it: %1").arg(file.errorString()));
    Reader reader(check);
    LineCutter lines(&reader);
    qint64 size = 0;
    for (QByteArray piece = pieceOf(&file, pieceBytes); !piece.isEmpty() && size <= longestListBytes;
         piece = pieceOf(&file, pieceBytes)) {
        lines.take(size == 0 ? withoutByteOrderMark(piece) : piece);
        size += piece.size();
    }
    if (file.error() != QFileDevice::NoError)
        return failed(QStringLiteral("cannot read it: %1").arg(file.errorString()));
    if (size > longestListBytes)
        return failed(QStringLiteral("it is longer than %1 MiB; a list of variables is expected")
                          .arg(longestListBytes / 1024 / 1024));
    lines.finish();
    return reader.finish();
}

} // namespace plc
