// SPDX-License-Identifier: MIT
/// \file
/// \brief What a format makes of the values that wait: the interface of json and sparkplug.
#ifndef GATEWAY_SESSION_PUBLISHER_H
#define GATEWAY_SESSION_PUBLISHER_H

#include "gateway/broker/broker.h"
#include "gateway/session/figures.h"
#include "gateway/values/sample.h"

#include <vector>

namespace plc
{

struct WaitingSample {
    quint64 sequence = 0; ///< rises from sample to sample
    Sample sample;
    bool mayBeDouble = false; ///< it went out before, and nothing says that the broker has it
};

/// The samples that the broker has not acknowledged yet, the oldest first.
class Backlog
{
public:
    virtual ~Backlog() = default;

    /// \return the next ones that were not taken since rewind(), \a most of them at most
    virtual std::vector<WaitingSample> take(std::size_t most) = 0;

    /// The broker has all up to this one.
    virtual void acknowledge(quint64 sequence) = 0;

    /// take() begins again with the oldest.
    virtual void rewind() = 0;

    /// \return the sequence number of the one that came last; 0 when none ever came
    virtual quint64 newest() const = 0;
};

/// How the variables are now, beside what waits.
class CurrentValues
{
public:
    virtual ~CurrentValues() = default;

    /// \return the value of a variable now; bad, and without a value, before the first
    virtual Sample current(std::size_t variable) = 0;

    /// \return the station of a variable
    virtual int stationOf(std::size_t variable) const = 0;

    /// \return true while the station answers, be it with refusals
    virtual bool isUp(int station) = 0;

    /// \return true when each variable was read once, or it was found that it cannot be
    virtual bool isSettled() = 0;
};

class Publisher : public BrokerEvents
{
public:
    /// Called before each attempt to connect.
    /// \return what the broker is to publish when the connection is lost
    virtual BrokerMessage will() = 0;

    /// Publishes whatever is due. Called often, with a connection or without.
    virtual void work(const GatewayFigures& figures) = 0;

    /// Says goodbye and ends the connection, if there is one.
    virtual void leave() = 0;

    /// \return true when the publisher wants no connection for now
    virtual bool pauses() const { return false; }

    /// \return values that went out, those sent again included, for the figures
    virtual long published() const = 0;
};

} // namespace plc

#endif
