// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/sparkplug_publisher.h"

#include "gateway/journal/journal.h"
#include "gateway/sparkplug/metric_types.h"
#include "gateway/sparkplug/payloads.h"
#include "runtime/model/printable.h"
#include "sparkplug_b.pb.h"

#include <QDateTime>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace plc
{

namespace
{

const int sequences = 256;
const std::size_t mostAtOnce = 1000;      // samples, so that other work comes between
const quint64 mostWithoutReceipt = 20000; // samples
const qint64 settlingMs = 10000;          // for a controller that is very slow
const qint64 rebirthPauseMs = 1000;       // requests in between are one

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

std::optional<sparkplug::Payload> parsed(const QByteArray& bytes)
{
    sparkplug::Payload payload;
    if (!payload.ParseFromArray(bytes.constData(), bytes.size()))
        return std::nullopt;
    return payload;
}

} // namespace

SparkplugPublisher::SparkplugPublisher(const GatewayOptions& options, Backlog* backlog, CurrentValues* values,
                                       WriteGate* writes)
    : m_options(options), m_backlog(backlog), m_values(values), m_writes(writes),
      m_birthNumber(QDir(options.stateDirectory).filePath(QStringLiteral("birth-number")))
{
    for (std::size_t variable = 0; variable < options.variables.size(); ++variable) {
        const int station = values->stationOf(variable);
        Device& device = m_devices[station];
        device.name = options.device + QString::number(station);
        device.variables.push_back(variable);
        device.isWritable = device.isWritable || writes->mayWrite(variable);
    }
}

SparkplugPublisher::~SparkplugPublisher() = default;

QByteArray SparkplugPublisher::topic(const char* type, const QString& device) const
{
    QByteArray text = "spBv1.0/" + m_options.group.toUtf8() + '/' + type + '/' + m_options.node.toUtf8();
    return device.isEmpty() ? text : text + '/' + device.toUtf8();
}

BrokerMessage SparkplugPublisher::will()
{
    return {topic("NDEATH"), deathOfNode(m_birthNumber.next()), 1, false};
}

bool SparkplugPublisher::pauses() const
{
    return Clock::now() < m_pauseUntil;
}

// The session.

void SparkplugPublisher::connected(Broker* broker)
{
    m_broker = broker;
    m_stage = Stage::Waiting;
    m_connectedAt = Clock::now();
    m_isSubscribed = false;
    m_isHostOnline = m_options.primaryHost.isEmpty();
    m_isRebirthDue = false;
    QByteArrayList filters = {topic("NCMD")};
    for (const auto& device : m_devices) {
        if (device.second.isWritable)
            filters << topic("DCMD", device.second.name);
    }
    if (!m_options.primaryHost.isEmpty())
        filters << "spBv1.0/STATE/" + m_options.primaryHost.toUtf8();
    m_subscription = m_broker->subscribe(filters, 1);
}

void SparkplugPublisher::subscribed(int token, bool granted)
{
    if (token != m_subscription)
        return;
    m_isSubscribed = granted;
    if (granted)
        return;
    tell(Weight::Error,
         QStringLiteral("the broker does not let this node subscribe to its commands and its host's "
                        "state: nothing is published"));
    m_broker->leave(false);
}

void SparkplugPublisher::disconnected()
{
    m_broker = nullptr;
    m_stage = Stage::Idle;
    m_receipt.reset();
    m_sentUpTo = 0;
    m_receiptUpTo = 0;
    m_backlog->rewind();
    for (auto& device : m_devices) {
        device.second.life = Life::Down;
        device.second.data.reset();
    }
}

void SparkplugPublisher::acknowledged(int token)
{
    if (!m_receipt || m_receipt->token != token)
        return;
    m_receiptUpTo = m_receipt->sequence;
    m_receipt.reset();
    m_backlog->acknowledge(m_receiptUpTo);
}

void SparkplugPublisher::work(const GatewayFigures& figures)
{
    m_writes->takeEnded(); // the journal has told them; a command has no answer but the data that follows
    // Births with values are worth a moment.
    const bool isReady = m_values->isSettled() || msSince(m_connectedAt) > settlingMs;
    if (m_stage == Stage::Waiting && m_isSubscribed && m_isHostOnline && isReady)
        bear(figures);
    if (m_stage != Stage::Born)
        return;
    if (m_isRebirthDue) {
        if (msSince(m_bornAt) < rebirthPauseMs)
            return; // no data until then
        bear(figures);
    }
    lookAtDevices(false, false);
    const bool isDrained = publishSamples();
    lookAtDevices(true, isDrained); // deaths come behind what the devices had to say
    publishFigures(figures);
    publishReceipt(figures);
}

void SparkplugPublisher::leave()
{
    if (!m_broker)
        return;
    const bool wasBorn = m_stage == Stage::Born;
    if (wasBorn)
        m_broker->publish({topic("NDEATH"), deathOfNode(m_birthNumber.current()), 1, false});
    m_stage = Stage::Idle;
    m_broker->leave(wasBorn);
}

// Births and deaths.

bool SparkplugPublisher::send(const QByteArray& topic, const QByteArray& payload)
{
    return m_broker->publish({topic, payload, 0, false}) >= 0;
}

int SparkplugPublisher::takeSeq()
{
    m_seq = (m_seq + 1) % sequences;
    return m_seq;
}

void SparkplugPublisher::bear(const GatewayFigures& figures)
{
    m_isRebirthDue = false;
    m_stage = Stage::Born;
    m_bornAt = Clock::now();
    m_figuresAt = m_bornAt;
    m_figures = figures;
    m_seq = 0;
    send(topic("NBIRTH"), birthOfNode(m_birthNumber.current(), figures, m_options.variables.size(), now()));
    for (auto& entry : m_devices) {
        Device& device = entry.second;
        const bool isUp = m_values->isUp(entry.first);
        if (isUp || device.life != Life::Down)
            bearDevice(&device, isUp ? Life::Up : Life::History);
    }
}

void SparkplugPublisher::bearDevice(Device* device, Life life)
{
    device->bornAt = m_backlog->newest(); // before the values, so that none falls between
    std::vector<Sample> samples;
    for (const std::size_t variable : device->variables) {
        samples.push_back(m_values->current(variable));
        if (life == Life::History && samples.back().quality == SampleQuality::Good)
            samples.back().quality = SampleQuality::Stale;
    }
    device->life = life;
    device->data.reset();
    send(topic("DBIRTH", device->name), birthOfDevice(samples, m_options.variables, takeSeq(), now()));
}

void SparkplugPublisher::buryDevice(Device* device)
{
    flush(device);
    device->life = Life::Down;
    send(topic("DDEATH", device->name), deathOfDevice(takeSeq(), now()));
}

/// \param isDrained nothing waits any more that the devices have to say
void SparkplugPublisher::lookAtDevices(bool mayDie, bool isDrained)
{
    for (auto& entry : m_devices) {
        Device& device = entry.second;
        const bool isUp = m_values->isUp(entry.first);
        const bool isOver = device.life == Life::History && (isUp || isDrained);
        if (isOver || (device.life == Life::Up && !isUp && mayDie))
            buryDevice(&device);
        if (isUp && device.life == Life::Down)
            bearDevice(&device, Life::Up);
    }
}

// Data.

/// \return true when nothing waits any more
bool SparkplugPublisher::publishSamples()
{
    if (m_sentUpTo - m_receiptUpTo > mostWithoutReceipt)
        return false;
    const std::vector<WaitingSample> samples = m_backlog->take(mostAtOnce);
    if (m_sentUpTo == 0 && !samples.empty())
        m_receiptUpTo = samples.front().sequence - 1;
    for (const WaitingSample& waiting : samples) {
        publishSample(waiting);
        m_sentUpTo = waiting.sequence;
    }
    for (auto& device : m_devices)
        flush(&device.second);
    return samples.size() < mostAtOnce;
}

void SparkplugPublisher::publishSample(const WaitingSample& waiting)
{
    Device& device = m_devices[m_values->stationOf(waiting.sample.variable)];
    if (device.life == Life::Down) {
        if (waiting.sample.quality != SampleQuality::Good)
            return; // its death has said so
        const bool isUp = m_values->isUp(m_values->stationOf(waiting.sample.variable));
        bearDevice(&device, isUp ? Life::Up : Life::History);
    }
    const bool isHistorical = waiting.sequence <= device.bornAt || device.life == Life::History;
    if (device.data && device.data->isHistorical() != isHistorical)
        flush(&device);
    if (!device.data)
        device.data = std::make_unique<DataMessage>(m_options.variables, isHistorical);
    if (!device.data->add(waiting.sample)) {
        flush(&device);
        device.data = std::make_unique<DataMessage>(m_options.variables, isHistorical);
        device.data->add(waiting.sample);
    }
    ++m_published;
}

void SparkplugPublisher::flush(Device* device)
{
    if (device->data && !device->data->isEmpty())
        send(topic("DDATA", device->name), device->data->take(takeSeq(), now()));
    device->data.reset();
}

void SparkplugPublisher::publishFigures(const GatewayFigures& figures)
{
    const bool isDue = msSince(m_figuresAt) >= qint64(m_options.figuresSeconds) * 1000 ||
                       figures.controllerConnected != m_figures.controllerConnected;
    if (!isDue)
        return;
    m_figuresAt = Clock::now();
    const int seq = (m_seq + 1) % sequences;
    const auto data = dataOfNode(m_figures, figures, m_options.variables.size(), seq, now());
    if (data && send(topic("NDATA"), *data))
        m_seq = seq;
    m_figures = figures;
}

/// One at a time: the next one is for all that went out meanwhile.
void SparkplugPublisher::publishReceipt(const GatewayFigures& figures)
{
    if (m_receipt || m_sentUpTo <= m_receiptUpTo)
        return;
    QJsonObject object;
    object.insert(QStringLiteral("at"), now());
    object.insert(QStringLiteral("controllerConnected"), figures.controllerConnected);
    object.insert(QStringLiteral("waiting"), static_cast<double>(figures.waiting));
    object.insert(QStringLiteral("dropped"), static_cast<double>(figures.dropped));
    const QByteArray ownTopic =
        "plcgateway/" + m_options.group.toUtf8() + '/' + m_options.node.toUtf8() + "/status";
    const int token =
        m_broker->publish({ownTopic, QJsonDocument(object).toJson(QJsonDocument::Compact), 1, false});
    if (token >= 0)
        m_receipt = Receipt{token, m_sentUpTo};
}

// What comes in.

void SparkplugPublisher::received(const BrokerMessage& message)
{
    if (message.topic == "spBv1.0/STATE/" + m_options.primaryHost.toUtf8() &&
        !m_options.primaryHost.isEmpty())
        return takeHostState(message.payload);
    if (message.retain)
        return tell(Weight::Warning,
                    QStringLiteral("%1: a retained message is no command: it may be of any age")
                        .arg(excerpt(QString::fromUtf8(message.topic))));
    if (message.topic == topic("NCMD"))
        return takeNodeCommand(message.payload);
    for (auto& device : m_devices) {
        if (message.topic == topic("DCMD", device.second.name))
            return takeDeviceCommand(&device.second, message);
    }
}

void SparkplugPublisher::takeHostState(const QByteArray& payload)
{
    const HostState::News news = m_host.take(payload);
    if (news == HostState::Online) {
        m_isHostOnline = true;
        m_hostPause.reset();
    } else if (news == HostState::Offline) {
        goOffline();
    }
}

/// What the host has not seen waits until it is back.
void SparkplugPublisher::goOffline()
{
    if (!m_broker || m_stage == Stage::Idle)
        return;
    if (m_stage == Stage::Born)
        tell(Weight::Notice,
             QStringLiteral("the primary host %1 is offline; values wait for it").arg(m_options.primaryHost));
    leave();
    m_pauseUntil = Clock::now() + std::chrono::milliseconds(m_hostPause.next());
}

void SparkplugPublisher::takeNodeCommand(const QByteArray& bytes)
{
    const auto payload = parsed(bytes);
    if (!payload)
        return tell(Weight::Warning, QStringLiteral("a command to the node does not parse"));
    for (const sparkplug::Metric& metric : payload->metrics()) {
        if (metric.name() == rebirthName && metric.boolean_value())
            m_isRebirthDue = true;
        else
            tell(Weight::Warning,
                 QStringLiteral("a command to the node names \"%1\", which cannot be written")
                     .arg(excerpt(QString::fromStdString(metric.name()))));
    }
}

std::optional<std::size_t> SparkplugPublisher::variableOf(const Device& device,
                                                          const sparkplug::Metric& metric) const
{
    for (const std::size_t variable : device.variables) {
        const bool isNamed =
            metric.has_name() && metric.name() == m_options.variables[variable].name.utf8().toStdString();
        if (isNamed || (!metric.has_name() && metric.has_alias() && metric.alias() == aliasOf(variable)))
            return variable;
    }
    return std::nullopt;
}

void SparkplugPublisher::takeDeviceCommand(Device* device, const BrokerMessage& message)
{
    WriteReport report;
    report.topic = message.topic;
    const auto payload = parsed(message.payload);
    if (!payload) {
        report.reason = QStringLiteral("the payload does not parse");
        return m_writes->refuse(report);
    }
    for (const sparkplug::Metric& metric : payload->metrics()) {
        report.variable = variableOf(*device, metric);
        report.topic = message.topic;
        report.value.clear();
        report.reason = QStringLiteral("the device has no such metric");
        if (report.variable) {
            const ListedVariable& variable = m_options.variables[*report.variable];
            report.topic = message.topic + ' ' + variable.name.text().toUtf8();
            report.reason.clear();
            report.value = commandText(metric, datatypeOf(variable), &report.reason);
        }
        if (report.reason.isEmpty())
            m_writes->request(report);
        else
            m_writes->refuse(report);
    }
}

} // namespace plc
