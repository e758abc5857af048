// SPDX-License-Identifier: MIT
#include "gateway/json/json_publisher.h"

#include "gateway/journal/journal.h"
#include "gateway/json/json_messages.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace plc
{

namespace
{

// So many messages wait for their acknowledgement at most; with each one the library goes through all of them.
const std::size_t mostUnderWay = 200;
const std::size_t mostResults = 10000; // that wait for a connection; then the oldest go

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

BrokerMessage retained(const QByteArray& topic, const QByteArray& payload)
{
    return {topic, payload, 1, true};
}

BrokerMessage offline(const QByteArray& topic, const char* why)
{
    QJsonObject object;
    object.insert(QStringLiteral("online"), false);
    object.insert(QStringLiteral("reason"), QLatin1String(why));
    return retained(topic, compact(object));
}

} // namespace

JsonPublisher::JsonPublisher(const QString& prefix, const std::vector<ListedVariable>& variables,
                             int figuresSeconds, Backlog* backlog, WriteGate* writes)
    : m_topics(prefix, variables), m_variables(variables), m_figuresSeconds(figuresSeconds),
      m_backlog(backlog), m_writes(writes)
{
}

BrokerMessage JsonPublisher::will()
{
    return offline(m_topics.state(), "connection lost");
}

void JsonPublisher::connected(Broker* broker)
{
    m_broker = broker;
    m_isStateDue = true;
    if (m_writes->isOpen())
        m_broker->subscribe({m_topics.setFilter()}, 1);
}

void JsonPublisher::subscribed(int token, bool granted)
{
    Q_UNUSED(token);
    if (!granted)
        tell(Weight::Error,
             QStringLiteral("the broker does not let this client subscribe to %1: nothing is written")
                 .arg(QString::fromUtf8(m_topics.setFilter())));
}

void JsonPublisher::disconnected()
{
    m_broker = nullptr;
    passAcknowledged();
    m_underWay.clear();
    m_backlog->rewind();
    for (const auto& result : m_resultsUnderWay)
        m_results.push_front(result.second);
    m_resultsUnderWay.clear();
}

void JsonPublisher::acknowledged(int token)
{
    m_resultsUnderWay.erase(token);
    const auto found = std::find_if(m_underWay.begin(), m_underWay.end(),
                                    [token](const UnderWay& one) { return one.token == token; });
    if (found == m_underWay.end())
        return;
    found->isAcknowledged = true;
    for (; !m_underWay.empty() && m_underWay.front().isAcknowledged; m_underWay.pop_front())
        m_done = m_underWay.front().sequence;
}

/// Of many acknowledgements at once the last one says all.
void JsonPublisher::passAcknowledged()
{
    if (m_done != 0)
        m_backlog->acknowledge(m_done);
    m_done = 0;
}

void JsonPublisher::work(const GatewayFigures& figures)
{
    for (WriteReport& report : m_writes->takeEnded())
        m_results.push_back(std::move(report));
    while (m_results.size() > mostResults)
        m_results.pop_front();
    if (!m_broker)
        return;
    passAcknowledged();
    publishState(figures);
    publishResults();
    publishSamples();
}

void JsonPublisher::publishState(const GatewayFigures& figures)
{
    m_isStateDue = m_isStateDue || m_wasControllerConnected != figures.controllerConnected ||
                   msSince(m_stateAt) >= qint64(m_figuresSeconds) * 1000;
    if (!m_isStateDue)
        return;
    QJsonObject object;
    object.insert(QStringLiteral("online"), true);
    object.insert(QStringLiteral("at"), QDateTime::currentMSecsSinceEpoch());
    object.insert(QStringLiteral("controllerConnected"), figures.controllerConnected);
    if (!figures.controllerConnected)
        object.insert(QStringLiteral("controllerError"), figures.controllerError);
    for (const FigureRow& row : figureRows())
        object.insert(QLatin1String(row.key), row.value(figures));
    m_isStateDue = m_broker->publish(retained(m_topics.state(), compact(object))) < 0;
    m_wasControllerConnected = figures.controllerConnected;
    m_stateAt = Clock::now();
}

BrokerMessage JsonPublisher::resultOf(const WriteReport& report) const
{
    QJsonObject object;
    if (!report.id.isUndefined())
        object.insert(QStringLiteral("id"), report.id);
    object.insert(QStringLiteral("result"), writeEndWord(report.end));
    object.insert(QStringLiteral("value"), report.value);
    if (!report.reason.isEmpty())
        object.insert(QStringLiteral("reason"), report.reason);
    if (report.exception != 0)
        object.insert(QStringLiteral("exception"), report.exception);
    object.insert(QStringLiteral("at"), QDateTime::currentMSecsSinceEpoch());
    return {m_topics.result(*report.variable), compact(object), 1, false};
}

void JsonPublisher::publishResults()
{
    for (; !m_results.empty(); m_results.pop_front()) {
        if (!m_results.front().variable)
            continue; // nobody's topic: the journal has it
        const int token = m_broker->publish(resultOf(m_results.front()));
        if (token < 0)
            return;
        m_resultsUnderWay.emplace(token, m_results.front());
    }
}

void JsonPublisher::publishSamples()
{
    while (m_underWay.size() < mostUnderWay) {
        const std::vector<WaitingSample> samples = m_backlog->take(mostUnderWay - m_underWay.size());
        if (samples.empty())
            return;
        for (const WaitingSample& waiting : samples) {
            const std::size_t index = waiting.sample.variable;
            const int token = m_broker->publish(
                retained(m_topics.value(index),
                         jsonOfSample(waiting.sample, m_variables[index], waiting.mayBeDouble)));
            if (token < 0)
                return; // the connection is gone, and with disconnected() all this begins again
            m_underWay.push_back({token, waiting.sequence, false});
            ++m_published;
        }
    }
}

void JsonPublisher::received(const BrokerMessage& message)
{
    WriteReport report;
    report.topic = message.topic;
    report.variable = m_topics.setVariable(message.topic);
    if (!report.variable) {
        report.reason = QStringLiteral("the list has no such variable");
        return m_writes->refuse(report);
    }
    const SetRequest request = parseSetRequest(message.payload);
    report.value = request.text;
    report.id = request.id;
    report.reason = request.error;
    // It would be carried out again with each connection.
    if (message.retain)
        report.reason = QStringLiteral("a retained message is no request: it may be of any age");
    if (report.reason.isEmpty())
        m_writes->request(report);
    else
        m_writes->refuse(report);
}

void JsonPublisher::leave()
{
    if (!m_broker)
        return;
    m_broker->publish(offline(m_topics.state(), "stopped"));
    m_broker->leave(false);
}

} // namespace plc
