// SPDX-License-Identifier: MIT
/// \file
/// \brief Connections to an MQTT broker through libmosquitto, one after the other.
#ifndef GATEWAY_BROKER_MOSQUITTO_BROKER_H
#define GATEWAY_BROKER_MOSQUITTO_BROKER_H

#include "gateway/broker/broker.h"
#include "gateway/options/gateway_options.h"

#include <memory>

#include <poll.h>

namespace plc
{

/// Names, and controllers that take no connection, may take minutes: connecting is done by a thread of its own. All
/// else, the events included, happens in the calls of serve(), which never wait.
class MosquittoBroker : public Broker
{
public:
    MosquittoBroker(const BrokerSettings& settings, const QString& clientId, BrokerEvents* events);
    ~MosquittoBroker() override; ///< drops the connection; the broker publishes the will

    /// Begins to connect.
    /// \param will published by the broker when the connection is lost; none when its topic is empty
    void connect(const BrokerMessage& will);

    /// \return true from connect() on until the connection is lost, or could not be made
    bool isBusy() const;

    /// \return why it was lost or could not be made, in words
    QString lastError() const;

    /// \return what to wait for with poll() before the next call of serve()
    pollfd descriptor() const;

    /// Takes what has come, sends what waits, and calls the events.
    void serve();

    int publish(const BrokerMessage& message) override;
    int subscribe(const QByteArrayList& filters, int qos) override;
    void leave(bool keepsWill) override;

private:
    class Connection;

    const BrokerSettings m_settings;
    const QString m_clientId;
    BrokerEvents* const m_events;
    std::shared_ptr<Connection> m_connection;
    QString m_lastError;
};

} // namespace plc

#endif
