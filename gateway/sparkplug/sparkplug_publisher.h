// SPDX-License-Identifier: MIT
/// \file
/// \brief Values as an edge node with a device for each station.
#ifndef GATEWAY_SPARKPLUG_SPARKPLUG_PUBLISHER_H
#define GATEWAY_SPARKPLUG_SPARKPLUG_PUBLISHER_H

#include "gateway/options/gateway_options.h"
#include "gateway/session/publisher.h"
#include "gateway/sparkplug/birth_number.h"
#include "gateway/sparkplug/host_state.h"
#include "gateway/writes/write_gate.h"
#include "runtime/link/reconnect_pause.h"
#include "runtime/model/clock.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>

namespace plc
{

namespace sparkplug
{
class Metric;
}

class DataMessage;

/// Data has QoS 0, which nobody acknowledges. So a status message of QoS 1 follows it on a topic of the gateway's own:
/// when the broker has acknowledged that, it has all that went before on the same connection, and the samples are done.
/// Those without such a receipt when a connection ends are sent again on the next one, as historical, like those that
/// waited.
///
/// A device that is down is born again for the time that it takes to send what it had to say before, with stale values.
class SparkplugPublisher : public Publisher
{
public:
    /// All of it has to live longer than this.
    SparkplugPublisher(const GatewayOptions& options, Backlog* backlog, CurrentValues* values,
                       WriteGate* writes);
    ~SparkplugPublisher() override;

    BrokerMessage will() override;
    void work(const GatewayFigures& figures) override;
    void leave() override;
    bool pauses() const override;
    long published() const override { return m_published; }

    void connected(Broker* broker) override;
    void subscribed(int token, bool granted) override;
    void acknowledged(int token) override;
    void received(const BrokerMessage& message) override;
    void disconnected() override;

private:
    enum class Stage {
        Idle,    ///< no connection
        Waiting, ///< for the subscriptions or the primary host
        Born     ///< births are out
    };
    enum class Life { Down, History, Up };

    struct Device {
        QString name;
        std::vector<std::size_t> variables;
        bool isWritable = false;
        Life life = Life::Down;
        quint64 bornAt = 0; ///< samples up to this sequence number are older than its birth
        std::unique_ptr<DataMessage> data;
    };

    struct Receipt {
        int token;
        quint64 sequence;
    };

    QByteArray topic(const char* type, const QString& device = QString()) const;
    bool send(const QByteArray& topic, const QByteArray& payload);
    int takeSeq();
    void bear(const GatewayFigures& figures);
    void bearDevice(Device* device, Life life);
    void buryDevice(Device* device);
    void lookAtDevices(bool mayDie, bool isDrained);
    bool publishSamples();
    void publishSample(const WaitingSample& waiting);
    void flush(Device* device);
    void publishFigures(const GatewayFigures& figures);
    void publishReceipt(const GatewayFigures& figures);
    void takeHostState(const QByteArray& payload);
    void takeNodeCommand(const QByteArray& payload);
    void takeDeviceCommand(Device* device, const BrokerMessage& message);
    std::optional<std::size_t> variableOf(const Device& device, const sparkplug::Metric& metric) const;
    void goOffline();

    const GatewayOptions& m_options;
    Backlog* const m_backlog;
    CurrentValues* const m_values;
    WriteGate* const m_writes;
    std::map<int, Device> m_devices; // by station
    BirthNumber m_birthNumber;

    Broker* m_broker = nullptr;
    Stage m_stage = Stage::Idle;
    Clock::time_point m_connectedAt;
    bool m_isSubscribed = false;
    int m_subscription = -1;
    int m_seq = 0;

    HostState m_host;
    bool m_isHostOnline = false;
    ReconnectPause m_hostPause;
    Clock::time_point m_pauseUntil;

    bool m_isRebirthDue = false;
    Clock::time_point m_bornAt;

    quint64 m_sentUpTo = 0;           // samples handed to this connection
    quint64 m_receiptUpTo = 0;        // of these the broker has
    std::optional<Receipt> m_receipt; // under way

    GatewayFigures m_figures; // as they were told last
    Clock::time_point m_figuresAt;
    long m_published = 0;
};

} // namespace plc

#endif
