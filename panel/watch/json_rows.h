// SPDX-License-Identifier: MIT
/// \file
/// \brief Rows as lines of JSON, many of them in little time.
#ifndef PANEL_WATCH_JSON_ROWS_H
#define PANEL_WATCH_JSON_ROWS_H

#include "panel/watch/watch_view.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>

#include <array>

namespace plc
{

/// Makes the lines of watchJson(), character by character the same, without a text for each of their parts. What is
/// rare is left to watchJson(). Nothing is kept of a row.
class JsonRows
{
public:
    /// \param station of variables that name none
    explicit JsonRows(int station) : m_station(station) {}

    /// Appends the line of \a row and a line feed.
    void append(const WatchRow& row, const QDateTime& time, QByteArray* lines);

private:
    bool appendQuickly(const WatchRow& row, QByteArray* lines);
    char* writeLine(const WatchRow& row, char* line);
    char* writeListed(const WatchRow& row, char* line);
    char* writeWord(ValueState state, char* line);
    char* writeWord(ValueType type, char* line);
    char* writeLimit(const char* member, double limit, char* line);

    const int m_station;
    QDateTime m_time;
    QByteArray m_timeText;
    std::array<QByteArray, 6> m_states; // their words, as long as they are not empty
    std::array<QByteArray, 13> m_types;
    QHash<quint64, QByteArray> m_limits; // as JSON has them, by their bits: many variables have the same
};

} // namespace plc

#endif
