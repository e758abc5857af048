// SPDX-License-Identifier: MIT
/// \file
/// \brief How long to wait before the next attempt to connect.
#ifndef RUNTIME_LINK_RECONNECT_PAUSE_H
#define RUNTIME_LINK_RECONNECT_PAUSE_H

namespace plc
{

/// At once first, then 100 ms, doubling to 5 s: a controller that is back is found soon, and one that is
/// gone, or that closes every connection, is not stormed.
class ReconnectPause
{
public:
    /// \return milliseconds to wait before this attempt; the next call gives more
    int next();

    /// The controller answered: the next attempt is made at once again.
    void reset();

private:
    int m_nextMs = 0;
};

} // namespace plc

#endif
