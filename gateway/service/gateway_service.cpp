// SPDX-License-Identifier: MIT
#include "gateway/service/gateway_service.h"

#include "gateway/broker/mosquitto_broker.h"
#include "gateway/journal/journal.h"
#include "gateway/json/json_publisher.h"
#include "gateway/plant/plant.h"
#include "gateway/service/service_report.h"
#include "gateway/service/spool_backlog.h"
#include "gateway/service/wake.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "runtime/link/reconnect_pause.h"

#include <QDateTime>
#include <QDir>

#include <csignal>

#include <sys/signalfd.h>

namespace plc
{

namespace
{

const int lookPeriodMs = 100;
const int figuresPeriodMs = 50; // gathering them costs more than publishing a value
const int goodbyeMs = 2000;     // for the broker to take it
const int farewellStepMs = 20;

QStringList namesOf(const std::vector<ListedVariable>& variables)
{
    QStringList names;
    for (const ListedVariable& variable : variables)
        names << variable.name;
    return names;
}

/// Signals that end the program, as something to wait for.
class EndSignals
{
public:
    EndSignals()
    {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGTERM);
        sigaddset(&set, SIGINT);
        m_descriptor = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
        if (m_descriptor < 0)
            throw std::runtime_error("signalfd() fails");
    }
    ~EndSignals() { close(m_descriptor); }
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor = -1;
};

/// Brings the connection back whenever it is gone, and says so once for each reason.
class Reconnecting
{
public:
    Reconnecting(MosquittoBroker* broker, Publisher* publisher) : m_broker(broker), m_publisher(publisher) {}

    void look()
    {
        if (m_broker->isBusy())
            return;
        if (m_wasBusy)
            lost();
        if (Clock::now() < m_tryAt || m_publisher->pauses())
            return;
        m_broker->connect(m_publisher->will());
        m_wasBusy = true;
    }

    bool isUp() const { return m_isUp; }

    void connected(const BrokerSettings& broker)
    {
        tell(Weight::Notice,
             QStringLiteral("connected to the broker %1:%2").arg(broker.host).arg(brokerPort(broker)));
        m_told.clear();
        m_upSince = Clock::now();
        m_isUp = true;
    }

private:
    void lost()
    {
        const qint64 steadyMs = 10000; // a broker that ends each connection at once is not stormed
        m_wasBusy = false;
        if (m_isUp && msSince(m_upSince) >= steadyMs)
            m_pause.reset();
        m_isUp = false;
        m_tryAt = Clock::now() + std::chrono::milliseconds(m_pause.next());
        const QString why = m_broker->lastError();
        if (why == m_told || why.isEmpty())
            return;
        tell(Weight::Error, QStringLiteral("no connection to the broker: %1; values wait for it").arg(why));
        m_told = why;
    }

    MosquittoBroker* const m_broker;
    Publisher* const m_publisher;
    ReconnectPause m_pause;
    Clock::time_point m_tryAt;
    Clock::time_point m_upSince;
    bool m_wasBusy = false;
    bool m_isUp = false;
    QString m_told;
};

class Service : public BrokerEvents
{
public:
    explicit Service(const GatewayOptions& options);

    void run();

    void connected(Broker* broker) override
    {
        ++m_connections;
        m_reconnecting.connected(m_options.broker);
        m_publisher->connected(broker);
    }
    void subscribed(int token, bool granted) override { m_publisher->subscribed(token, granted); }
    void acknowledged(int token) override { m_publisher->acknowledged(token); }
    void received(const BrokerMessage& message) override { m_publisher->received(message); }
    void disconnected() override { m_publisher->disconnected(); }

private:
    void openSpool();
    std::unique_ptr<Publisher> makePublisher();
    bool wait(int milliseconds);
    void work();
    void leave();
    GatewayFigures figures() const;

    const GatewayOptions& m_options;
    const EndSignals m_signals;
    const Wake m_wake;
    Spool m_spool;
    SpoolBacklog m_backlog;
    Plant m_plant;
    WriteGate m_writes;
    std::unique_ptr<Publisher> m_publisher;
    MosquittoBroker m_broker;
    Reconnecting m_reconnecting;
    ServiceReport m_report;
    long m_connections = 0;
    GatewayFigures m_figures; // of a moment ago
    Clock::time_point m_figuresAt;
};

Service::Service(const GatewayOptions& options)
    : m_options(options), m_spool([](const QString& words) { tell(Weight::Warning, words); }),
      m_backlog(&m_spool), m_plant(options,
                                   [this](const std::vector<Sample>& batch) {
                                       m_spool.append(batch);
                                       m_wake.wake();
                                   }),
      m_writes(
          options.variables, options.allowWrites,
          [this](std::size_t variable, const std::vector<quint32>& elements, const WriteDone& done) {
              m_plant.write(variable, elements, done);
          },
          [this] { m_wake.wake(); }),
      m_publisher(makePublisher()), m_broker(options.broker, clientIdOf(options), this),
      m_reconnecting(&m_broker, m_publisher.get()), m_report(options)
{
}

std::unique_ptr<Publisher> Service::makePublisher()
{
    if (m_options.format == PayloadFormat::Sparkplug)
        return std::make_unique<SparkplugPublisher>(m_options, &m_backlog, &m_plant, &m_writes);
    return std::make_unique<JsonPublisher>(m_options.prefix, m_options.variables, m_options.figuresSeconds,
                                           &m_backlog, &m_writes);
}

void Service::openSpool()
{
    const QDir directory(m_options.stateDirectory);
    if (!directory.mkpath(QStringLiteral(".")))
        throw std::runtime_error("--state " + m_options.stateDirectory.toStdString() +
                                 ": the folder cannot be made; a path that this user may write is expected");
    SpoolLimits limits;
    limits.bytes = qint64(m_options.spoolMegabytes) << 20;
    limits.ageMs = qint64(m_options.spoolHours) * 3600 * 1000;
    const QString words =
        m_spool.open(directory.filePath(QStringLiteral("spool.db")), namesOf(m_options.variables), limits);
    if (!words.isEmpty())
        throw std::runtime_error(words.toStdString());
}

void Service::run()
{
    openSpool();
    if (m_options.allowWrites && !m_writes.isOpen())
        tell(Weight::Warning,
             QStringLiteral("allow-writes has no effect: no variable of %1 has rw in the column access")
                 .arg(m_options.listFile));
    m_plant.start();
    const QString words = m_report.open();
    if (!words.isEmpty())
        tell(Weight::Warning, words);
    m_report.ready();
    do {
        work();
    } while (wait(lookPeriodMs));
    leave();
}

/// \return false when a signal wants the end
bool Service::wait(int milliseconds)
{
    pollfd descriptors[] = {
        {m_signals.descriptor(), POLLIN, 0}, {m_wake.descriptor(), POLLIN, 0}, m_broker.descriptor()};
    poll(descriptors, std::size(descriptors), milliseconds);
    if ((descriptors[1].revents & POLLIN) != 0)
        m_wake.take();
    return (descriptors[0].revents & POLLIN) == 0;
}

void Service::work()
{
    m_reconnecting.look();
    m_broker.serve();
    m_plant.look();
    if (msSince(m_figuresAt) >= figuresPeriodMs) {
        m_figures = figures();
        m_figuresAt = Clock::now();
    }
    m_publisher->work(m_figures);
    m_report.look(m_plant.rounds());
    if (m_report.isDue())
        m_report.tell(m_figures);
}

GatewayFigures Service::figures() const
{
    GatewayFigures figures;
    m_plant.addFigures(&figures);
    const SpoolFigures spool = m_spool.figures();
    figures.waiting = spool.depth;
    figures.dropped = spool.dropped;
    figures.spoolBytes = spool.bytes;
    figures.spoolProblem = spool.problem;
    figures.brokerConnected = m_reconnecting.isUp();
    figures.brokerError = m_broker.lastError();
    figures.oldestMs = spool.oldestAt < 0 ? -1 : QDateTime::currentMSecsSinceEpoch() - spool.oldestAt;
    figures.brokerConnections = m_connections;
    figures.published = m_publisher->published();
    return figures;
}

/// What the broker has not taken by then waits for the next start.
void Service::leave()
{
    m_report.stopping();
    m_plant.stop();
    const Clock::time_point since = Clock::now();
    const auto serveWhile = [&](auto condition) {
        while (m_broker.isBusy() && condition() && msSince(since) < goodbyeMs) {
            m_publisher->work(figures());
            wait(farewellStepMs);
            m_broker.serve();
        }
    };
    serveWhile([this] { return m_spool.figures().depth > 0; });
    m_publisher->leave();
    serveWhile([] { return true; });
    m_spool.close();
}

} // namespace

void runGateway(const GatewayOptions& options)
{
    if (!options.broker.password.isEmpty() && options.broker.caFile.isEmpty())
        tell(Weight::Warning, QStringLiteral("the password goes to the broker unencrypted; --ca encrypts"));
    Service(options).run();
}

} // namespace plc
