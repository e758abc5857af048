// SPDX-License-Identifier: MIT
/// \file
/// \brief The table of plcpanel watch on a terminal: what its keys do and what it shows.
#ifndef PANEL_WATCH_LIVE_TABLE_H
#define PANEL_WATCH_LIVE_TABLE_H

#include "panel/terminal/text_entry.h"
#include "panel/watch/row_order.h"
#include "panel/watch/row_window.h"
#include "panel/watch/seen_values.h"
#include "panel/watch/table_page.h"
#include "panel/watch/watch_display.h"
#include "panel/watch/watched_variables.h"
#include "panel/watch/write_entry.h"
#include "runtime/model/outcome.h"

#include <functional>
#include <map>
#include <optional>

namespace plc
{

/// What a key asks of whoever shows the table.
struct TableWish {
    enum Kind { Nothing, End, Redraw, SwitchStation, Write };
    Kind kind = Nothing;
    int station = -1;
    bool on = false;
    int row = -1; ///< to be written
    Variable variable;
    std::vector<quint32> values;
};

/// Where the table has its values from.
struct TableSource {
    const WatchedVariables& variables;
    SeenValues& seen;
    std::function<CyclicValue(int row)> value;
    WriteCheck writeCheck;
    ValueFormat format = ValueFormat::Decimal;
    bool hasKeys = true; ///< false: nothing can be pressed
};

/// Knows no terminal. One thread. Only rows in sight are asked for their values.
class LiveTable
{
public:
    explicit LiveTable(const TableSource& source);

    TableWish press(const Key& key);

    /// Takes a line instead of keys, "o3" and the like.
    TableWish order(const QString& line);

    /// Words at the bottom until the next key.
    void tell(const QString& news) { m_news = news; }

    void writeEnded(int row, const WriteOutcome& outcome, qint64 nowMs);

    /// \param report without rows
    Page page(const WatchReport& report, int columns, int lines, qint64 nowMs);

private:
    struct Written {
        QString value;
        QString outcome; ///< empty: not there yet
        bool confirmed = false;
        qint64 endedAtMs = -1;
    };
    enum class Overlay { None, Help, Details };

    // Keys.
    TableWish pressInTable(const Key& key);
    TableWish pressCharacter(const QString& character);
    void pressInOverlay(const Key& key);
    TableWish pressInWrite(const Key& key);
    TableWish pressInEntry(const Key& key);
    bool move(const Key& key);
    void click(int line);
    void beginWrite();
    void sortAnew();
    void find(bool forward);
    bool isFoundAt(int place) const;

    // What is shown.
    void arrange(qint64 nowMs);
    WatchRow rowAt(int row) const;
    int selectedRow() const;
    TableRow tableRow(int row, qint64 nowMs) const;
    QString stateOf(int row, const WatchRow& shown, qint64 nowMs) const;
    void fillRows(TableContents* contents, int columns, qint64 nowMs);
    void fillOverlay(TableContents* contents, const TableLayout& layout, int columns);
    void fillFoot(TableContents* contents, int columns) const;
    QString writtenText(int row) const;
    QString hintText(int columns) const;
    QString statusText() const;

    TableSource m_source;
    RowOrder m_order = RowOrder::List;
    std::optional<RowOrder> m_arranged; // how m_rows stand
    std::vector<int> m_rows;            // in the order in which they are shown
    RowWindow m_window;
    int m_nameWidth = 0;
    int m_valueWidth = 0; // grows with what was seen, so that columns do not go to and fro
    int m_firstLine = 0;  // of the page that shows a row, for clicks
    bool m_showsRange = false;
    Overlay m_overlay = Overlay::None;
    int m_overlayTop = 0;
    int m_overlayMost = 0;            // how far it scrolls
    std::optional<TextEntry> m_entry; // of a search or a station
    bool m_isSearch = false;
    QString m_sought;
    std::optional<WriteEntry> m_write;
    int m_writeRow = -1;
    std::map<int, Written> m_written; // by row
    QString m_news;
    bool m_hasStations = false;
};

} // namespace plc

#endif
