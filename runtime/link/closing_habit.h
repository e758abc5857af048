// SPDX-License-Identifier: MIT
/// \file
/// \brief Controllers that close the connection after each reply.
#ifndef RUNTIME_LINK_CLOSING_HABIT_H
#define RUNTIME_LINK_CLOSING_HABIT_H

namespace plc
{

/// The end of a connection comes a little later than the reply before it. A request that goes out in between is lost.
/// So behind the first answer on a connection to a controller that is known for it, the end is waited for a little.
class ClosingHabit
{
public:
    /// The controller has closed a connection. \param answers requests that it answered on it
    void closed(int answers) { m_isKnown = answers == 1 || (m_isKnown && answers == 0); }

    /// \param answers requests answered so far on the connection that the next one is for
    /// \return how long to wait for its end; 0: not at all
    int waitMs(int answers)
    {
        if (answers > 1) // it was waited for in vain
            m_isKnown = false;
        const int longestMs = 20;
        return m_isKnown && answers == 1 ? longestMs : 0;
    }

private:
    bool m_isKnown = false;
};

} // namespace plc

#endif
