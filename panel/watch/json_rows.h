// SPDX-License-Identifier: MIT
/// \file
/// \brief Rows as lines of JSON, many of them in little time.
#ifndef PANEL_WATCH_JSON_ROWS_H
#define PANEL_WATCH_JSON_ROWS_H

#include "panel/watch/watch_view.h"

#include <QByteArray>
#include <QDateTime>

#include <vector>

namespace plc
{

/// Makes the lines of watchJson(), character by character the same. What stays of a row is kept from its second
/// line on; numbers are written as they are. What is rare is left to watchJson().
class JsonRows
{
public:
    /// \param station of variables that name none
    explicit JsonRows(int station) : m_station(station) {}

    /// Appends the line of \a row, which is always the same one for \a index, and a line feed.
    void append(std::size_t index, const WatchRow& row, const QDateTime& time, QByteArray* lines);

private:
    struct Fixed {
        bool isKnown = false;
        QByteArray begin; ///< up to "state":"
        QByteArray type;  ///< the member, with its comma; empty where there is none
    };

    bool isSecondLine(std::size_t index);
    const Fixed& fixedOf(std::size_t index, const WatchRow& row);

    const int m_station;
    std::vector<Fixed> m_fixed;
    QDateTime m_time;
    QByteArray m_timeText;
};

} // namespace plc

#endif
