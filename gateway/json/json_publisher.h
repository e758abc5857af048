// SPDX-License-Identifier: MIT
/// \file
/// \brief Values as JSON: a retained topic for each variable, and what is written to it.
#ifndef GATEWAY_JSON_JSON_PUBLISHER_H
#define GATEWAY_JSON_JSON_PUBLISHER_H

#include "gateway/json/json_topics.h"
#include "gateway/session/publisher.h"
#include "gateway/writes/write_gate.h"
#include "runtime/model/clock.h"

#include <deque>
#include <unordered_map>

namespace plc
{

/// Everything goes with QoS 1. A sample is done when the broker has acknowledged it; how a write ended is told again
/// on the next connection until the broker has taken it.
class JsonPublisher : public Publisher
{
public:
    /// All of it has to live longer than this.
    JsonPublisher(const QString& prefix, const std::vector<ListedVariable>& variables, int figuresSeconds,
                  Backlog* backlog, WriteGate* writes);

    BrokerMessage will() override;
    void work(const GatewayFigures& figures) override;
    void leave() override;
    long published() const override { return m_published; }

    void connected(Broker* broker) override;
    void subscribed(int token, bool granted) override;
    void acknowledged(int token) override;
    void received(const BrokerMessage& message) override;
    void disconnected() override;

private:
    struct UnderWay {
        int token;
        quint64 sequence;
        bool isAcknowledged;
    };

    void publishState(const GatewayFigures& figures);
    void publishSamples();
    void passAcknowledged();
    void publishResults();
    BrokerMessage resultOf(const WriteReport& report) const;

    const JsonTopics m_topics;
    const std::vector<ListedVariable>& m_variables;
    const int m_figuresSeconds;
    Backlog* const m_backlog;
    WriteGate* const m_writes;

    Broker* m_broker = nullptr; // null: there is no connection
    std::deque<UnderWay> m_underWay;
    quint64 m_done = 0; // sequence number of the last one that the broker has, to be passed on; 0: none
    std::deque<WriteReport> m_results;                      // to be told
    std::unordered_map<int, WriteReport> m_resultsUnderWay; // by token
    bool m_isStateDue = false;
    bool m_wasControllerConnected = false;
    Clock::time_point m_stateAt;
    long m_published = 0;
};

} // namespace plc

#endif
