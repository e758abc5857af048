// SPDX-License-Identifier: MIT
/// \file
/// \brief Whether the primary host is online, by the messages that it leaves on the broker.
#ifndef GATEWAY_SPARKPLUG_HOST_STATE_H
#define GATEWAY_SPARKPLUG_HOST_STATE_H

#include <QByteArray>

#include <optional>

namespace plc
{

class HostState
{
public:
    enum News { None, Online, Offline };

    /// \return what \a payload says: nothing when it is no state, or one that is older than the state before it
    News take(const QByteArray& payload);

private:
    std::optional<double> m_last;       // time of the last state, in ms since 1970 UTC
    std::optional<double> m_lastOnline; // of the last one that said online
};

} // namespace plc

#endif
