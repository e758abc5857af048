// SPDX-License-Identifier: MIT
#include "panel/watch/write_entry.h"

#include "panel/watch/row_texts.h"
#include "runtime/model/area_table.h"
#include "runtime/model/counted.h"
#include "runtime/model/listed_value.h"

namespace plc
{

namespace
{

QString nowText(const WatchRow& row, ValueFormat format)
{
    return valuePieces(row, format, 0).join(QLatin1Char(' '));
}

/// \return what the list allows, as far as it says so
QString limitsBehind(const WatchRow& row)
{
    const QString limits = row.listed ? limitsText(*row.listed) : QString();
    return limits.isEmpty() ? QString() : QStringLiteral("; %1 may be written").arg(limits);
}

std::optional<std::vector<quint32>> parsed(const WatchRow& row, const QString& text, QString* error)
{
    if (row.listed)
        return parseListed(*row.listed, text, error);
    const auto values = parseValues(row.variable.area, text, error);
    if (!values || static_cast<int>(values->size()) == row.variable.count)
        return values;
    *error = QStringLiteral("%1 given; it has %2, with commas between them")
                 .arg(counted(static_cast<qint64>(values->size()), "value is", "values are"))
                 .arg(row.variable.count);
    return std::nullopt;
}

} // namespace

QString WriteEntry::refusal(const WatchRow& row)
{
    if (row.listed && row.listed->access == Access::ReadOnly)
        return QStringLiteral("%1 is not written: the list says that it is only read (access r)")
            .arg(rowName(row));
    if (!areaOf(row.variable.area).isWritable)
        return QStringLiteral("%1 is not written: area %2 can only be read")
            .arg(rowName(row))
            .arg(row.variable.area);
    return QString();
}

WriteEntry::WriteEntry(const WatchRow& row, ValueFormat format, const WriteCheck& check)
    : m_row(row), m_format(format), m_check(check), m_entry(QStringLiteral("new value: "))
{
}

QString WriteEntry::headline() const
{
    if (hasError())
        return m_error;
    const QString now = nowText(m_row, m_format);
    return m_isAsking ? QStringLiteral("Write %1 to %2, which is %3?").arg(valueText(), rowName(m_row), now)
                      : QStringLiteral("%1 is %2%3").arg(rowName(m_row), now, limitsBehind(m_row));
}

QString WriteEntry::prompt() const
{
    return m_isAsking ? QStringLiteral("y: yes, any other key: no ") : m_entry.prompt();
}

QString WriteEntry::valueText() const
{
    return elementsText(m_row, m_values, m_format);
}

WriteEntry::Result WriteEntry::press(const Key& key)
{
    m_error.clear();
    if (m_isAsking) {
        const bool isYes =
            key.kind == Key::Character && key.text.compare(QLatin1String("y"), Qt::CaseInsensitive) == 0;
        return isYes ? Agreed : Cancelled;
    }
    switch (m_entry.press(key)) {
    case TextEntry::Going:
        return Going;
    case TextEntry::Cancelled:
        return Cancelled;
    case TextEntry::Done:
        break;
    }
    if (m_entry.text().isEmpty())
        return Cancelled;
    m_isAsking = parse();
    return Going;
}

bool WriteEntry::parse()
{
    const auto values = parsed(m_row, m_entry.text(), &m_error);
    if (!values)
        return false;
    m_values = *values;
    m_error = m_check ? m_check(m_row.variable, m_values) : QString();
    return m_error.isEmpty();
}

} // namespace plc
