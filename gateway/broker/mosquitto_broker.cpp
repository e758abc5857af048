// SPDX-License-Identifier: MIT
#include "gateway/broker/mosquitto_broker.h"

#include "gateway/journal/journal.h"

#include <QFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace plc
{

namespace
{

const int verifyPeer = 1;             // SSL_VERIFY_PEER
const int mostUnacknowledged = 65535; // whoever publishes has a limit of its own
const int mostPacketsAtOnce = 100;
const int longestPayload = 64 * 1024;
const int firstFailure = 0x80; // of the broker's codes

/// libmosquitto's own state is one per process.
void initializeOnce()
{
    static const int result = mosquitto_lib_init();
    if (result != MOSQ_ERR_SUCCESS)
        throw std::runtime_error("libmosquitto cannot be used: " + std::string(mosquitto_strerror(result)));
}

/// \return null for an empty text, which is how libmosquitto is told of none
const char* orNull(const QByteArray& text)
{
    return text.isEmpty() ? nullptr : text.constData();
}

QString errorWords(int result, int systemError)
{
    if (result == MOSQ_ERR_KEEPALIVE) // which libmosquitto has no words for
        return QStringLiteral("it was silent for longer than --keep-alive allows");
    if (result == MOSQ_ERR_ERRNO && systemError != 0)
        return QString::fromLocal8Bit(std::strerror(systemError));
    // Where a connection ends within a packet there is no error of the system.
    return QString::fromUtf8(mosquitto_strerror(result == MOSQ_ERR_ERRNO ? MOSQ_ERR_CONN_LOST : result));
}

} // namespace

/// One connection. The thread that connects holds it too, because it may outlast whoever gave it up.
class MosquittoBroker::Connection : public std::enable_shared_from_this<MosquittoBroker::Connection>
{
public:
    Connection(const BrokerSettings& settings, const QString& clientId, BrokerEvents* events, Broker* broker)
        : m_settings(settings), m_events(events), m_broker(broker)
    {
        initializeOnce();
        m_mosquitto = mosquitto_new(clientId.toUtf8().constData(), true, this);
        if (!m_mosquitto)
            throw std::runtime_error("libmosquitto does not take the name of the client, or has no memory");
        m_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        setCallbacks();
    }

    ~Connection()
    {
        mosquitto_destroy(m_mosquitto);
        close(m_wake);
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// \return why it cannot even be tried, or an empty text
    QString prepare(const BrokerMessage& will);
    void begin();

    /// Nobody is told anything of it any more.
    void abandon() { m_events = nullptr; }

    pollfd descriptor() const;
    void serve();
    bool isLost() const { return m_state == State::Lost; }
    QString error() const { return m_error; }

    int publish(const BrokerMessage& message);
    int subscribe(const QByteArrayList& filters, int qos);
    void leave(bool keepsWill);

private:
    enum class State { Connecting, Open, Lost };

    bool isV5() const { return m_settings.version == MqttVersion::V5; }
    void setCallbacks();
    int setTls();
    void connectNow();
    void lose(const QString& why);
    void judge(int result);
    int tokenOf(int token, int result, const QByteArray& topic);

    static Connection* of(void* object) { return static_cast<Connection*>(object); }
    void onConnect(int code);
    void onDisconnect(int code);
    void onPublish(int token, int code);
    void onMessage(const mosquitto_message* message);
    void onSubscribe(int token, int count, const int* granted);

    const BrokerSettings m_settings;
    BrokerEvents* m_events;
    Broker* const m_broker;
    mosquitto* m_mosquitto = nullptr;
    int m_wake = -1;
    State m_state = State::Connecting;
    bool m_isUp = false; // the broker took the connection, and the events know
    bool m_isLeaving = false;
    bool m_isRefusalTold = false;
    std::set<QByteArray> m_untaken; // topics that were told
    QString m_error;
    QString m_tlsError;

    // Of the thread that connects, to be read when m_isTried is set.
    std::atomic<bool> m_isTried{false};
    int m_result = 0;
    int m_systemError = 0;
};

void MosquittoBroker::Connection::setCallbacks()
{
    mosquitto_connect_v5_callback_set(m_mosquitto,
                                      [](mosquitto*, void* object, int code, int, const mosquitto_property*) {
                                          of(object)->onConnect(code);
                                      });
    mosquitto_disconnect_v5_callback_set(m_mosquitto,
                                         [](mosquitto*, void* object, int code, const mosquitto_property*) {
                                             of(object)->onDisconnect(code);
                                         });
    mosquitto_message_callback_set(
        m_mosquitto,
        [](mosquitto*, void* object, const mosquitto_message* message) { of(object)->onMessage(message); });
    mosquitto_publish_v5_callback_set(m_mosquitto,
                                      [](mosquitto*, void* object, int token, int code,
                                         const mosquitto_property*) { of(object)->onPublish(token, code); });
    mosquitto_subscribe_callback_set(m_mosquitto,
                                     [](mosquitto*, void* object, int token, int count, const int* granted) {
                                         of(object)->onSubscribe(token, count, granted);
                                     });
    // What is wrong with a certificate is told nowhere else.
    mosquitto_log_callback_set(m_mosquitto, [](mosquitto*, void* object, int level, const char* text) {
        if (level == MOSQ_LOG_ERR && !of(object)->m_settings.caFile.isEmpty())
            of(object)->m_tlsError = QString::fromUtf8(text);
    });
}

int MosquittoBroker::Connection::setTls()
{
    const QByteArray ca = QFile::encodeName(m_settings.caFile);
    const QByteArray certificate = QFile::encodeName(m_settings.certificateFile);
    const QByteArray key = QFile::encodeName(m_settings.keyFile);
    const int result =
        mosquitto_tls_set(m_mosquitto, ca.constData(), nullptr, orNull(certificate), orNull(key), nullptr);
    return result == MOSQ_ERR_SUCCESS ? mosquitto_tls_opts_set(m_mosquitto, verifyPeer, "tlsv1.2", nullptr)
                                      : result;
}

QString MosquittoBroker::Connection::prepare(const BrokerMessage& will)
{
    mosquitto_int_option(m_mosquitto, MOSQ_OPT_PROTOCOL_VERSION,
                         isV5() ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311);
    mosquitto_int_option(m_mosquitto, MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_int_option(m_mosquitto, MOSQ_OPT_SEND_MAXIMUM, mostUnacknowledged);
    int result = MOSQ_ERR_SUCCESS;
    if (!m_settings.user.isEmpty())
        result = mosquitto_username_pw_set(m_mosquitto, m_settings.user.toUtf8().constData(),
                                           orNull(m_settings.password.toUtf8()));
    if (result == MOSQ_ERR_SUCCESS && !m_settings.caFile.isEmpty())
        result = setTls();
    if (result == MOSQ_ERR_SUCCESS && !will.topic.isEmpty())
        result = mosquitto_will_set(m_mosquitto, will.topic.constData(), will.payload.size(),
                                    will.payload.constData(), will.qos, will.retain);
    return result == MOSQ_ERR_SUCCESS ? QString() : errorWords(result, errno);
}

void MosquittoBroker::Connection::begin()
{
    std::thread([self = shared_from_this()] { self->connectNow(); }).detach();
}

void MosquittoBroker::Connection::connectNow()
{
    m_result =
        mosquitto_connect_bind_v5(m_mosquitto, m_settings.host.toUtf8().constData(), brokerPort(m_settings),
                                  m_settings.keepAliveSeconds, nullptr, nullptr);
    m_systemError = errno;
    m_isTried = true;
    const std::uint64_t one = 1;
    if (write(m_wake, &one, sizeof one) < 0)
        m_systemError = errno; // it is full, which wakes as well
}

pollfd MosquittoBroker::Connection::descriptor() const
{
    if (m_state != State::Open)
        return {m_wake, POLLIN, 0};
    const bool wantsToSend = mosquitto_want_write(m_mosquitto);
    return {mosquitto_socket(m_mosquitto), static_cast<short>(wantsToSend ? POLLIN | POLLOUT : POLLIN), 0};
}

void MosquittoBroker::Connection::serve()
{
    if (m_state == State::Connecting && m_isTried) {
        m_state = State::Open;
        if (m_result != MOSQ_ERR_SUCCESS)
            lose(m_tlsError.isEmpty() ? errorWords(m_result, m_systemError) : m_tlsError);
    }
    if (m_state != State::Open)
        return;
    judge(mosquitto_loop_read(m_mosquitto, mostPacketsAtOnce));
    if (m_state == State::Open && mosquitto_want_write(m_mosquitto))
        judge(mosquitto_loop_write(m_mosquitto, mostPacketsAtOnce));
    if (m_state == State::Open)
        judge(mosquitto_loop_misc(m_mosquitto));
}

void MosquittoBroker::Connection::judge(int result)
{
    if (result == MOSQ_ERR_SUCCESS)
        return;
    if (m_isLeaving)
        lose(QString());
    else if (result == MOSQ_ERR_TLS || !m_tlsError.isEmpty())
        lose(QStringLiteral("the encrypted connection was refused: %1").arg(m_tlsError));
    else
        lose(errorWords(result, errno));
}

void MosquittoBroker::Connection::lose(const QString& why)
{
    if (m_state == State::Lost)
        return;
    m_state = State::Lost;
    if (m_error.isEmpty())
        m_error = why;
    if (m_isUp && m_events)
        m_events->disconnected();
    m_isUp = false;
}

void MosquittoBroker::Connection::onConnect(int code)
{
    if (code != 0) {
        m_error = QStringLiteral("the broker refuses the connection: %1")
                      .arg(QString::fromUtf8(isV5() ? mosquitto_reason_string(code)
                                                    : mosquitto_connack_string(code)));
        return; // libmosquitto ends it
    }
    m_isUp = true;
    m_tlsError.clear();
    if (m_events)
        m_events->connected(m_broker);
}

/// Why a broker ends the connection it says with MQTT 5 alone; smaller codes are libmosquitto's own.
void MosquittoBroker::Connection::onDisconnect(int code)
{
    if (isV5() && m_isUp && code >= firstFailure)
        m_error =
            QStringLiteral("the broker ended it: %1").arg(QString::fromUtf8(mosquitto_reason_string(code)));
}

/// What the broker refuses it would refuse again: it is told, and done with.
void MosquittoBroker::Connection::onPublish(int token, int code)
{
    if (code >= firstFailure && !m_isRefusalTold)
        tell(Weight::Error, QStringLiteral("the broker refuses messages of this client: %1; they are lost")
                                .arg(QString::fromUtf8(mosquitto_reason_string(code))));
    m_isRefusalTold = m_isRefusalTold || code >= firstFailure;
    if (m_events)
        m_events->acknowledged(token);
}

void MosquittoBroker::Connection::onMessage(const mosquitto_message* message)
{
    if (message->payloadlen > longestPayload)
        return tell(Weight::Warning, QStringLiteral("a message of %1 bytes is not looked at; %2 are allowed")
                                         .arg(message->payloadlen)
                                         .arg(longestPayload));
    BrokerMessage received;
    received.topic = message->topic;
    received.payload = QByteArray(static_cast<const char*>(message->payload), message->payloadlen);
    received.qos = message->qos;
    received.retain = message->retain;
    if (m_events)
        m_events->received(received);
}

void MosquittoBroker::Connection::onSubscribe(int token, int count, const int* granted)
{
    bool isGranted = true;
    for (int filter = 0; filter < count; ++filter)
        isGranted = isGranted && granted[filter] < firstFailure;
    if (m_events)
        m_events->subscribed(token, isGranted);
}

/// A message that is more than a broker of MQTT 5 takes never goes out, so a person has to know.
int MosquittoBroker::Connection::tokenOf(int token, int result, const QByteArray& topic)
{
    if (result == MOSQ_ERR_SUCCESS)
        return token;
    if (result != MOSQ_ERR_NO_CONN && m_untaken.insert(topic).second)
        tell(Weight::Error, QStringLiteral("the broker takes no such message as %1: %2; it waits")
                                .arg(QString::fromUtf8(topic), errorWords(result, errno)));
    return -1;
}

int MosquittoBroker::Connection::publish(const BrokerMessage& message)
{
    if (!m_isUp)
        return -1;
    int token = -1;
    const int result =
        mosquitto_publish(m_mosquitto, &token, message.topic.constData(), message.payload.size(),
                          message.payload.constData(), message.qos, message.retain);
    return tokenOf(token, result, message.topic);
}

int MosquittoBroker::Connection::subscribe(const QByteArrayList& filters, int qos)
{
    if (!m_isUp)
        return -1;
    std::vector<char*> texts;
    for (const QByteArray& filter : filters)
        texts.push_back(const_cast<char*>(filter.constData())); // libmosquitto does not write to it
    int token = -1;
    const int result = mosquitto_subscribe_multiple(m_mosquitto, &token, static_cast<int>(texts.size()),
                                                    texts.data(), qos, 0, nullptr);
    return result == MOSQ_ERR_SUCCESS ? token : -1;
}

void MosquittoBroker::Connection::leave(bool keepsWill)
{
    m_isLeaving = true;
    mosquitto_disconnect_v5(m_mosquitto, keepsWill && isV5() ? MQTT_RC_DISCONNECT_WITH_WILL_MSG : 0, nullptr);
}

MosquittoBroker::MosquittoBroker(const BrokerSettings& settings, const QString& clientId,
                                 BrokerEvents* events)
    : m_settings(settings), m_clientId(clientId), m_events(events)
{
}

MosquittoBroker::~MosquittoBroker()
{
    if (m_connection)
        m_connection->abandon();
}

void MosquittoBroker::connect(const BrokerMessage& will)
{
    m_connection = std::make_shared<Connection>(m_settings, m_clientId, m_events, this);
    const QString error = m_connection->prepare(will);
    if (error.isEmpty()) // until this try has ended, what was wrong with the one before is all that is known
        return m_connection->begin();
    m_lastError = error;
    m_connection.reset();
}

bool MosquittoBroker::isBusy() const
{
    return m_connection != nullptr;
}

QString MosquittoBroker::lastError() const
{
    return m_lastError;
}

pollfd MosquittoBroker::descriptor() const
{
    return m_connection ? m_connection->descriptor() : pollfd{-1, 0, 0};
}

void MosquittoBroker::serve()
{
    const auto connection = m_connection; // the events may begin another one
    if (!connection)
        return;
    connection->serve();
    if (connection->isLost() && m_connection == connection) {
        m_lastError = connection->error();
        m_connection.reset();
    }
}

int MosquittoBroker::publish(const BrokerMessage& message)
{
    return m_connection ? m_connection->publish(message) : -1;
}

int MosquittoBroker::subscribe(const QByteArrayList& filters, int qos)
{
    return m_connection ? m_connection->subscribe(filters, qos) : -1;
}

void MosquittoBroker::leave(bool keepsWill)
{
    if (m_connection)
        m_connection->leave(keepsWill);
}

} // namespace plc
