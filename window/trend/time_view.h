// SPDX-License-Identifier: MIT
/// \file
/// \brief Which piece of time a trend shows: the last so many seconds, or a piece that stays.
#ifndef WINDOW_TREND_TIME_VIEW_H
#define WINDOW_TREND_TIME_VIEW_H

#include <QtGlobal>

#include <algorithm>

namespace plc
{

/// Times are ms since 1970.
class TimeView
{
public:
    static constexpr qint64 shortestMs = 1000;
    static constexpr qint64 longestMs = 366LL * 24 * 3600 * 1000;

    bool isFollowing() const { return m_isFollowing; }
    qint64 spanMs() const { return m_spanMs; }
    qint64 toMs() const { return m_toMs; }
    qint64 fromMs() const { return m_toMs - m_spanMs; }

    /// Time goes on; a view that follows goes with it.
    void setNow(qint64 nowMs)
    {
        m_nowMs = nowMs;
        if (m_isFollowing)
            m_toMs = nowMs;
    }

    void follow()
    {
        m_isFollowing = true;
        m_toMs = m_nowMs;
    }

    void pause() { m_isFollowing = false; }

    void setSpan(qint64 spanMs) { m_spanMs = std::clamp(spanMs, shortestMs, longestMs); }

    /// Moves the view; it does not go beyond now, and being moved it stays.
    void pan(qint64 byMs)
    {
        m_isFollowing = false;
        m_toMs = std::min(m_toMs + byMs, m_nowMs);
    }

    /// A view that follows goes on following.
    /// \param factor   below 1 shows less
    /// \param aroundMs stays where it is
    void zoom(double factor, qint64 aroundMs)
    {
        const qint64 before = m_spanMs;
        setSpan(static_cast<qint64>(static_cast<double>(before) * factor));
        if (m_isFollowing)
            return;
        const double real = static_cast<double>(m_spanMs) / static_cast<double>(before);
        m_toMs = aroundMs + static_cast<qint64>(static_cast<double>(m_toMs - aroundMs) * real);
        m_toMs = std::min(m_toMs, m_nowMs);
    }

    /// Shows exactly this from now on.
    void show(qint64 fromMs, qint64 toMs)
    {
        m_isFollowing = false;
        setSpan(toMs - fromMs);
        m_toMs = toMs;
    }

private:
    qint64 m_nowMs = 0;
    qint64 m_toMs = 0;
    qint64 m_spanMs = 60000;
    bool m_isFollowing = true;
};

} // namespace plc

#endif
