// SPDX-License-Identifier: MIT
#include "gateway/system/service_manager.h"

#include "gateway/system/manager_socket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <unistd.h>

namespace plc
{

namespace
{

using test::ManagerSocket;

class ServiceManagerTest : public testing::Test
{
protected:
    QTemporaryDir m_folder;
    const QByteArray m_path = m_folder.filePath(QStringLiteral("notify")).toUtf8();
    const ManagerSocket m_socket{m_path};
    ServiceManager m_manager{m_path, 8000};
};

TEST_F(ServiceManagerTest, IsToldOfBeginningAndEnd)
{
    m_manager.ready();
    m_manager.stopping();
    EXPECT_THAT(m_socket.heard(), testing::ElementsAre("READY=1", "STOPPING=1"));
}

TEST_F(ServiceManagerTest, IsToldHowItGoesInOneLineAndOnce)
{
    m_manager.status(QStringLiteral("Öl\nläuft"));
    m_manager.status(QStringLiteral("Öl\nläuft"));
    EXPECT_THAT(m_socket.heard(), testing::ElementsAre("STATUS=Öl läuft"));
}

TEST_F(ServiceManagerTest, IsFoundByANameThatIsNoFile)
{
    const QByteArray name = "@plcgateway-test-" + QByteArray::number(getpid());
    const ManagerSocket socket(name);
    ServiceManager manager(name, 0);
    manager.ready();
    EXPECT_THAT(socket.heard(), testing::ElementsAre("READY=1"));
}

TEST_F(ServiceManagerTest, IsNotThereWhereNobodyNamedIt)
{
    ServiceManager nobody(QByteArray(), 8000);
    nobody.ready();
    nobody.alive();
    EXPECT_EQ(0, nobody.watchdogMs());
    EXPECT_THAT(m_socket.heard(), testing::IsEmpty());
}

TEST_F(ServiceManagerTest, IsReadFromTheEnvironment)
{
    qputenv("NOTIFY_SOCKET", m_path);
    qputenv("WATCHDOG_USEC", "30000000");
    qputenv("WATCHDOG_PID", QByteArray::number(getpid()));
    EXPECT_EQ(30000, ServiceManager().watchdogMs());
    qputenv("WATCHDOG_PID", "1");
    EXPECT_EQ(0, ServiceManager().watchdogMs()) << "it is meant for another process";
    ServiceManager().ready();
    EXPECT_THAT(m_socket.heard(), testing::ElementsAre("READY=1"));
    for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"})
        qunsetenv(name);
}

class WatchdogTest : public ServiceManagerTest
{
protected:
    std::size_t signsOfLife() const { return m_socket.heard().size(); }

    Watchdog m_watchdog{&m_manager, 5000};
};

TEST_F(WatchdogTest, IsFedSeveralTimesInItsTimeWhileThePollingGoesRound)
{
    for (qint64 ms = 0; ms < 8000; ms += 100)
        m_watchdog.look(static_cast<quint32>(ms), ms);
    EXPECT_EQ(4U, signsOfLife());
}

TEST_F(WatchdogTest, IsNotFedWhenThePollingIsStuck)
{
    m_watchdog.look(7, 0);
    for (qint64 ms = 100; ms <= 5000; ms += 100)
        m_watchdog.look(7, ms);
    EXPECT_GT(signsOfLife(), 0U);
    for (qint64 ms = 5100; ms < 60000; ms += 100)
        m_watchdog.look(7, ms);
    EXPECT_EQ(0U, signsOfLife());
    m_watchdog.look(8, 60000);
    EXPECT_EQ(1U, signsOfLife()) << "it goes round again";
}

TEST_F(WatchdogTest, IsNotFedWhenNobodyLooks)
{
    m_watchdog.look(1, 0);
    EXPECT_EQ(1U, signsOfLife());
    EXPECT_EQ(0U, signsOfLife());
}

} // namespace

} // namespace plc
