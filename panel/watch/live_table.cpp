// SPDX-License-Identifier: MIT
#include "panel/watch/live_table.h"

#include "panel/session/write_words.h"
#include "panel/terminal/display_width.h"
#include "panel/watch/watch_order.h"

#include <algorithm>

namespace plc
{

namespace
{

const int wheelRows = 3;
const int farAway = 1 << 28; // farther than any row
TableWish wishOf(TableWish::Kind kind)
{
    TableWish wish;
    wish.kind = kind;
    return wish;
}

} // namespace

LiveTable::LiveTable(const TableSource& source) : m_source(source)
{
    for (int row = 0; row < source.variables.size(); ++row) {
        m_rows.push_back(row);
        m_nameWidth = std::max(m_nameWidth, columnsOf(source.variables.name(row)));
    }
    m_window.resize(source.variables.size(), 1);
}

TableWish LiveTable::press(const Key& key)
{
    if (key.kind == Key::Redraw)
        return wishOf(TableWish::Redraw);
    m_news.clear();
    if (m_write)
        return pressInWrite(key);
    if (m_entry)
        return pressInEntry(key);
    if (m_overlay != Overlay::None) {
        pressInOverlay(key);
        return TableWish();
    }
    return pressInTable(key);
}

TableWish LiveTable::pressInTable(const Key& key)
{
    if (move(key))
        return TableWish();
    switch (key.kind) {
    case Key::Character:
        return pressCharacter(key.text);
    case Key::Enter:
        m_overlay = m_rows.empty() ? Overlay::None : Overlay::Details;
        m_overlayTop = 0;
        break;
    case Key::Help:
        m_overlay = Overlay::Help;
        m_overlayTop = 0;
        break;
    default:
        break;
    }
    return TableWish();
}

bool LiveTable::move(const Key& key)
{
    switch (key.kind) {
    case Key::Up:
        m_window.step(-1);
        return true;
    case Key::Down:
        m_window.step(1);
        return true;
    case Key::PageUp:
        m_window.turn(-1);
        return true;
    case Key::PageDown:
        m_window.turn(1);
        return true;
    case Key::Home:
        m_window.step(-farAway);
        return true;
    case Key::End:
        m_window.step(farAway);
        return true;
    case Key::WheelUp:
        m_window.scroll(-wheelRows);
        return true;
    case Key::WheelDown:
        m_window.scroll(wheelRows);
        return true;
    case Key::Click:
        click(key.line);
        return true;
    default:
        return false;
    }
}

void LiveTable::click(int line)
{
    const int place = m_window.first() + line - m_firstLine;
    if (line >= m_firstLine && place < m_window.end())
        m_window.select(place);
}

TableWish LiveTable::pressCharacter(const QString& character)
{
    const char letter = character.at(0).toLatin1();
    switch (letter) {
    case 'q':
    case 'Q':
        return wishOf(TableWish::End);
    case '?':
    case 'h':
        return pressInTable({Key::Help, QString(), -1});
    case ' ':
        return pressInTable({Key::PageDown, QString(), -1});
    case 'j':
        return pressInTable({Key::Down, QString(), -1});
    case 'k':
        return pressInTable({Key::Up, QString(), -1});
    case '/':
        m_isSearch = true;
        m_entry = TextEntry(QStringLiteral("/"));
        break;
    case 'n':
        find(true);
        break;
    case 'N':
        find(false);
        break;
    case 's':
        sortAnew();
        break;
    case 'm':
        m_showsRange = !m_showsRange;
        break;
    case 'r':
        m_source.seen.forgetRanges();
        m_news = QStringLiteral("minimum and maximum begin anew");
        break;
    case 'w':
        beginWrite();
        break;
    case 'o':
    case 'i':
    case '+':
    case '-':
        m_isSearch = false;
        m_entry = TextEntry(QStringLiteral("> "), character);
        break;
    default:
        m_news = QStringLiteral("\"%1\" is no key here; ? shows those that are").arg(character);
    }
    return TableWish();
}

void LiveTable::pressInOverlay(const Key& key)
{
    switch (key.kind) {
    case Key::Up:
    case Key::WheelUp:
        m_overlayTop = std::max(m_overlayTop - 1, 0);
        break;
    case Key::Down:
    case Key::WheelDown:
        m_overlayTop = std::min(m_overlayTop + 1, m_overlayMost);
        break;
    case Key::PageUp:
    case Key::Home:
        m_overlayTop = 0;
        break;
    case Key::PageDown:
    case Key::End:
        m_overlayTop = m_overlayMost;
        break;
    default:
        m_overlay = Overlay::None;
    }
}

TableWish LiveTable::pressInEntry(const Key& key)
{
    const TextEntry::Result result = m_entry->press(key);
    const QString text = m_entry->text();
    if (result == TextEntry::Going)
        return TableWish();
    m_entry.reset();
    if (result == TextEntry::Cancelled)
        return TableWish();
    if (!m_isSearch)
        return order(text);
    if (!text.isEmpty())
        m_sought = text;
    find(true);
    return TableWish();
}

TableWish LiveTable::order(const QString& line)
{
    const WatchOrder order = parseWatchOrder(line);
    TableWish wish;
    switch (order.kind) {
    case WatchOrder::End:
        return wishOf(TableWish::End);
    case WatchOrder::Wrong:
        m_news = order.error;
        return wish;
    case WatchOrder::Nothing:
        return wish;
    case WatchOrder::SwitchOff:
    case WatchOrder::SwitchOn:
        break;
    }
    wish.kind = TableWish::SwitchStation;
    wish.station = order.station;
    wish.on = order.kind == WatchOrder::SwitchOn;
    return wish;
}

void LiveTable::find(bool forward)
{
    if (m_sought.isEmpty()) {
        m_news = QStringLiteral("nothing was sought yet; / finds names and addresses");
        return;
    }
    const int step = forward ? 1 : -1;
    const int count = m_window.rows();
    for (int distance = 1; distance <= count; ++distance) {
        const int place = (m_window.selected() + step * distance + count) % count;
        if (!isFoundAt(place))
            continue;
        const bool isRound = forward ? place <= m_window.selected() : place >= m_window.selected();
        if (isRound && distance < count)
            m_news = QStringLiteral("\"%1\": from the other end on").arg(m_sought);
        else if (isRound)
            m_news = QStringLiteral("\"%1\": no other").arg(m_sought);
        m_window.select(place);
        return;
    }
    m_news = QStringLiteral("\"%1\" is in no name and no address").arg(m_sought);
}

bool LiveTable::isFoundAt(int place) const
{
    const int row = m_rows[static_cast<std::size_t>(place)];
    const WatchedVariables& variables = m_source.variables;
    return variables.name(row).contains(m_sought, Qt::CaseInsensitive) ||
           variableText(variables.variable(row)).contains(m_sought, Qt::CaseInsensitive);
}

/// What stands above is what was asked for.
void LiveTable::sortAnew()
{
    m_order = nextOrder(m_order);
    m_window.select(0);
}

int LiveTable::selectedRow() const
{
    return m_rows[static_cast<std::size_t>(m_window.selected())];
}

WatchRow LiveTable::rowAt(int row) const
{
    WatchRow shown;
    shown.variable = m_source.variables.variable(row);
    shown.value = m_source.value(row);
    shown.listed = m_source.variables.listed(row);
    return shown;
}

void LiveTable::beginWrite()
{
    if (m_rows.empty())
        return;
    m_writeRow = selectedRow();
    const WatchRow row = rowAt(m_writeRow);
    m_news = WriteEntry::refusal(row);
    if (m_news.isEmpty())
        m_write.emplace(row, m_source.format, m_source.writeCheck);
}

TableWish LiveTable::pressInWrite(const Key& key)
{
    const WriteEntry::Result result = m_write->press(key);
    if (result == WriteEntry::Going)
        return TableWish();
    TableWish wish;
    if (result == WriteEntry::Agreed) {
        wish.kind = TableWish::Write;
        wish.row = m_writeRow;
        wish.variable = m_source.variables.variable(m_writeRow);
        wish.values = m_write->values();
        m_written[m_writeRow] = {m_write->valueText(), QString(), false, -1};
    } else {
        m_news = QStringLiteral("nothing is written");
    }
    m_write.reset();
    return wish;
}

void LiveTable::writeEnded(int row, const WriteOutcome& outcome, qint64 nowMs)
{
    Written& written = m_written[row];
    written.outcome = writeOutcomeText(outcome);
    written.confirmed = outcome.confirmed;
    written.endedAtMs = nowMs;
    if (!m_write && !m_entry)
        m_news =
            QStringLiteral("%1: %2 %3").arg(m_source.variables.name(row), written.value, written.outcome);
}

} // namespace plc
