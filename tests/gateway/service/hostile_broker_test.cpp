// SPDX-License-Identifier: MIT
// The gateway as a program, with brokers that do not keep to the protocol, and what the journal says of them.

#include "gateway/service/plant_fixture.h"
#include "support/listener.h"

#include <atomic>
#include <thread>

#include <sys/socket.h>
#include <unistd.h>

namespace
{

using test::BrokerRun;
using test::GatewayRun;

/// Answers the first packet of each connection with fixed bytes, and takes no notice of what comes then.
class ScriptedBroker
{
public:
    /// \param closes after the bytes; otherwise it is silent from then on
    ScriptedBroker(const char* hex, bool closes) : m_answer(QByteArray::fromHex(hex)), m_closes(closes)
    {
        m_thread = std::thread([this] { run(); });
    }

    ~ScriptedBroker()
    {
        m_ends = true;
        m_thread.join();
    }

    ScriptedBroker(const ScriptedBroker&) = delete;
    ScriptedBroker& operator=(const ScriptedBroker&) = delete;

    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_listener.port()); }

private:
    void run()
    {
        while (!m_ends) {
            if (!test::isReadable(m_listener.descriptor()))
                continue;
            const int connection = accept(m_listener.descriptor(), nullptr, nullptr);
            serve(connection);
            close(connection);
        }
    }

    void serve(int connection)
    {
        char bytes[4096];
        bool isAnswered = false;
        while (!m_ends) {
            if (!test::isReadable(connection))
                continue;
            if (recv(connection, bytes, sizeof bytes, 0) <= 0)
                return;
            if (!isAnswered)
                send(connection, m_answer.constData(), static_cast<std::size_t>(m_answer.size()),
                     MSG_NOSIGNAL);
            isAnswered = true;
            if (m_closes)
                return;
        }
    }

    const QByteArray m_answer;
    const bool m_closes;
    const test::Listener m_listener;
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

class HostileBroker : public test::PlantFixture
{
protected:
    QStringList to(const QString& address, const char* version = "3.1.1") const
    {
        QStringList all = json({QStringLiteral("--mqtt"), QLatin1String(version),
                                QStringLiteral("--keep-alive"), QStringLiteral("5")});
        all[all.indexOf(QStringLiteral("--broker")) + 1] = address;
        return all;
    }
};

TEST_F(HostileBroker, ThatTakesOnlySmallerMessagesIsToldOf)
{
    BrokerRun small("listener PORT 127.0.0.1\nallow_anonymous true\nmax_packet_size 150\n");
    small.start();
    GatewayRun gateway(to(small.address(), "5"));
    EXPECT_TRUE(gateway.says("the broker takes no such message as p/$state: "));
}

TEST_F(HostileBroker, ThatTakesNoQosIsToldOf)
{
    ScriptedBroker scripted("20 05 00 00 02 24 00", false); // it takes the connection, with QoS 0 alone
    GatewayRun gateway(to(scripted.address(), "5"));
    EXPECT_TRUE(gateway.says("the broker takes no such message as p/$state: "));
}

TEST_F(HostileBroker, ThatEndsTheConnectionSaysWhy)
{
    ScriptedBroker scripted("20 03 00 00 00 E0 02 8E 00", false); // another client has the same name
    GatewayRun gateway(to(scripted.address(), "5"));
    EXPECT_TRUE(gateway.says("no connection to the broker: the broker ended it: Session taken over"));
}

TEST_F(HostileBroker, ThatClosesWithinAMessageHasEndedTheConnection)
{
    ScriptedBroker scripted("20 02 00 00 30 20 00 05", true);
    GatewayRun gateway(to(scripted.address()));
    EXPECT_TRUE(gateway.says("no connection to the broker: "));
    EXPECT_EQ(gateway.messages().find("Success"), std::string::npos) << gateway.messages();
}

TEST_F(HostileBroker, ThatSendsWhatIsNoPacketDoesNotLookAsIfItWereEncrypted)
{
    ScriptedBroker scripted("20 02 00 00 00 00", false);
    GatewayRun gateway(to(scripted.address()));
    EXPECT_TRUE(gateway.says("no connection to the broker: "));
    EXPECT_EQ(gateway.messages().find("encrypted"), std::string::npos) << gateway.messages();
}

TEST_F(HostileBroker, ThatNeverAnswersIsGivenUpForItsSilence)
{
    ScriptedBroker scripted("", false);
    GatewayRun gateway(to(scripted.address()));
    EXPECT_TRUE(
        gateway.says("no connection to the broker: it was silent for longer than --keep-alive allows"));
}

} // namespace
