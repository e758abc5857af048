// SPDX-License-Identifier: MIT
/// \file
/// \brief A connection to an MQTT broker, as whoever publishes sees it.
#ifndef GATEWAY_BROKER_BROKER_H
#define GATEWAY_BROKER_BROKER_H

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

namespace plc
{

struct BrokerMessage {
    QByteArray topic;
    QByteArray payload;
    int qos = 0;
    bool retain = false;
};

/// One connection: it is connected when it is handed out, and gone for good once it is lost.
class Broker
{
public:
    virtual ~Broker() = default;

    /// \return a token that BrokerEvents::acknowledged() names when the broker has taken a message of QoS 1; -1
    ///         when it did not go out, because the connection is gone
    virtual int publish(const BrokerMessage& message) = 0;

    /// \return a token that BrokerEvents::subscribed() names; -1 as above
    virtual int subscribe(const QByteArrayList& filters, int qos) = 0;

    /// Ends the connection when what was published is out.
    /// \param keepsWill with MQTT 5: the broker publishes the will all the same
    virtual void leave(bool keepsWill) = 0;
};

/// What comes from a broker. All on the thread that serves the connection.
class BrokerEvents
{
public:
    virtual ~BrokerEvents() = default;

    virtual void connected(Broker* broker) = 0;

    /// \param granted false: the broker refused one of the filters
    virtual void subscribed(int token, bool granted) = 0;
    virtual void acknowledged(int token) = 0;
    virtual void received(const BrokerMessage& message) = 0;

    /// After connected(): the connection is gone, and nothing more comes of its tokens.
    virtual void disconnected() = 0;
};

} // namespace plc

#endif
