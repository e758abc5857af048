// SPDX-License-Identifier: MIT
// The simulated controller as a program, asked by mbpoll: a client that nobody here wrote.

#include "panel/peers/peer_programs.h"
#include "panel/plcpanel_run.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QProcess>
#include <QTemporaryFile>

namespace
{

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class PlcsimWithMbpoll : public testing::Test
{
protected:
    void SetUp() override
    {
        if (test::mbpollProgram().isEmpty())
            GTEST_SKIP() << "not installed: Debian package mbpoll";
        test::needApplication();
        ASSERT_TRUE(m_memory.open());
        m_memory.write("unit 1 coil 100 1\nunit 1 coil 102 1\n"
                       "unit 1 register 100 1234\nunit 1 register 101 65535\n"
                       "unit 1 register 63232 22136\nunit 1 register 63233 4660\n"
                       "unit 2 register 100 77\n");
        m_memory.close();
        m_plcsim.start(QString::fromUtf8(builtPlcsim()), {QStringLiteral("--load"), m_memory.fileName()});
        ASSERT_TRUE(m_plcsim.waitForReadyRead(60000));
        m_port = m_plcsim.readLine().trimmed().split(':').last();
        ASSERT_GT(m_port.toInt(), 0);
    }

    void TearDown() override
    {
        m_plcsim.kill();
        m_plcsim.waitForFinished();
    }

    /// Asks once, elements counted from 0 on. \param what words behind mbpoll, e.g. "-t 4 -r 100 -c 2"
    /// \param values to be written; none: it reads
    test::PeerRun mbpoll(const char* what, const QStringList& values = {}) const
    {
        const QStringList words = QString::fromLatin1(what).split(QLatin1Char(' '));
        const QStringList once = {QStringLiteral("-m"),        QStringLiteral("tcp"), QStringLiteral("-p"),
                                  QString::fromLatin1(m_port), QStringLiteral("-0"),  QStringLiteral("-1")};
        return test::runPeer(test::mbpollProgram(),
                             once + words + QStringList{QStringLiteral("127.0.0.1")} + values);
    }

    /// \return what plcpanel reads of it
    std::string panelReads(const char* variable) const
    {
        return test::plcpanel({QStringLiteral("read"), QString::fromLatin1(variable),
                               QStringLiteral("--json"), QStringLiteral("--controller"),
                               QStringLiteral("127.0.0.1:") + QString::fromLatin1(m_port)})
            .out;
    }

private:
    QTemporaryFile m_memory;
    QProcess m_plcsim;
    QByteArray m_port;
};

} // namespace

TEST_F(PlcsimWithMbpoll, GivesItsCoils)
{
    const auto run = mbpoll("-t 0 -r 99 -c 4");
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(run.text,
                ContainsRegex("\\[99\\]:[ \t]+0\n\\[100\\]:[ \t]+1\n\\[101\\]:[ \t]+0\n\\[102\\]:[ \t]+1\n"));
}

TEST_F(PlcsimWithMbpoll, GivesItsRegisters)
{
    const auto run = mbpoll("-t 4:hex -r 99 -c 3");
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(run.text,
                ContainsRegex("\\[99\\]:[ \t]+0x0000\n\\[100\\]:[ \t]+0x04D2\n\\[101\\]:[ \t]+0xFFFF\n"));
}

TEST_F(PlcsimWithMbpoll, GivesDoubleWordsLowWordFirst)
{
    const auto run = mbpoll("-t 4:int -r 63232 -c 1");
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(run.text, ContainsRegex("\\[63232\\]:[ \t]+305419896\n"));
}

TEST_F(PlcsimWithMbpoll, KeepsUnitsApart)
{
    EXPECT_THAT(mbpoll("-a 2 -t 4 -r 100 -c 1").text, ContainsRegex("\\[100\\]:[ \t]+77\n"));
}

TEST_F(PlcsimWithMbpoll, TakesCoils)
{
    const auto run = mbpoll("-t 0 -r 100", {"0", "1", "1"});
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(panelReads("2:99x6"), HasSubstr("[0,0,1,1,0,0]"));
}

TEST_F(PlcsimWithMbpoll, TakesRegisters)
{
    const auto run = mbpoll("-t 4 -r 200", {"1234", "65535"});
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(panelReads("9:199x4"), HasSubstr("[0,1234,65535,0]"));
    EXPECT_THAT(panelReads("8:200.0x6"), HasSubstr("[0,1,0,0,1,0]")); // 1234 is 0x04D2
}

TEST_F(PlcsimWithMbpoll, TakesDoubleWordsLowWordFirst)
{
    const auto run = mbpoll("-t 4:int -r 63234", {"305419896"});
    EXPECT_EQ(run.status, 0) << run.text;
    EXPECT_THAT(panelReads("14:200x3"), HasSubstr("[305419896,305419896,0]"));
}

TEST_F(PlcsimWithMbpoll, RefusesInAWayThatItUnderstands)
{
    const auto run = mbpoll("-t 4 -r 65535 -c 2");
    EXPECT_THAT(run.text, HasSubstr("Illegal data address"));
    EXPECT_THAT(run.text, Not(ContainsRegex("\\[65535\\]:[ \t]+[0-9]")));
}
