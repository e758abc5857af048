// SPDX-License-Identifier: MIT
// Settings and fields that mean "on" by not being 0 are on when they are negative, too.
#include "cycle.h"

#include "image/image_write.h"

namespace
{

const int ON = -1;

class NegativeSettings : public CycleTest
{
protected:
    void failForGood() const
    {
        for (int i = 0; i <= info.retryLimit; ++i)
            timeOut();
    }

    /// The entries of the store as "station:area:address=value".
    static std::vector<std::string> stored()
    {
        std::vector<std::string> entries;
        for (const EXTENDVAR& entry : PLC_driver.extendList)
            entries.push_back(std::to_string(entry.station) + ":" + std::to_string(entry.area) + ":" +
                              std::to_string(entry.address) + "=" + toHex(entry.value));
        return entries;
    }

    typedef std::vector<std::string> List;
};

class NegativeMultiStation : public NegativeSettings
{
protected:
    void SetUp() override
    {
        NegativeSettings::SetUp();
        info.multiStation = ON;
    }
};

const char WORD_1234[] = "00 00 00 00 00 05 02 03 02 12 34";

} // namespace

TEST_F(NegativeMultiStation, PurgesTheFailedStationOnly)
{
    queueReadOf(3, 1);
    poll();
    queueWriteOf(2, 12);
    queueWriteOf(3, 13);
    queueOnceOf(2, 52);

    failForGood();

    EXPECT_EQ(Keys{12}, keys(PLC_driver.writeList));
    EXPECT_EQ(Keys{52}, keys(PLC_driver.onceReadList));
}

TEST_F(NegativeMultiStation, FilesRepliesForTheirStation)
{
    queueReadOf(2, 100);
    poll();
    reply(WORD_1234);
    EXPECT_EQ(List{"2:9:100=34 12"}, stored());
    EXPECT_EQ(0, word(100));
}

TEST_F(NegativeMultiStation, MirrorsWritesForTheirStation)
{
    RW_VAR var = Write(9, 100, 1, "34 12", 2);
    WriteDataToLocal(&var);
    EXPECT_EQ(List{"2:9:100=34 12"}, stored());
    EXPECT_EQ(0, word(100));
}

TEST_F(NegativeMultiStation, ReadsRegistersOfTheStation)
{
    PLC_driver.extendList << EXTENDVAR{2, 9, 100, fromHex("34 12")};
    QString text("100");
    QByteArray out;
    GetRegisterData(0, 9, &text, 2, &out, 1);
    EXPECT_EQ("34 12", toHex(out));
}

TEST_F(NegativeMultiStation, WritesRegistersOfTheStation)
{
    QString name("level"), text("100");
    QByteArray data = fromHex("34 12");
    SetRegisterData(&name, 9, &text, 2, &data, 1, 11, 0);
    ASSERT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(2, PLC_driver.writeList.at(0).station);
}

TEST_F(NegativeMultiStation, KeepsTheStationOfAOneShotRead)
{
    RW_VAR var = Variable(9, 0, 1, 2);
    var.name2 = QString("100");
    AddListOnceReadVar(&var, 0);
    EXPECT_EQ(2, var.station);
}

TEST_F(NegativeMultiStation, RebuildsTheReadListByStation)
{
    QList<HOST_VAR> variables;
    for (int station : {2, 3}) {
        HOST_VAR var = HOST_VAR();
        var.area = 9;
        var.station = static_cast<unsigned char>(station);
        var.address = QString("100");
        var.count = 1;
        variables.append(var);
    }
    EXPECT_EQ(2, ReCreatReadVarList(&variables));
    EXPECT_EQ(2, PLC_driver.readList.at(0).station);
}

TEST_F(NegativeSettings, RemoteModeBuildsRemoteFrames)
{
    info.remoteMode = ON;
    queueWriteOf(1, 11);
    poll();
    EXPECT_EQ(24, PLC_driver.protocolList.at(0).frameLength);
    goodReply();
    queueOnceOf(1, 51);
    poll();
    EXPECT_EQ(22, PLC_driver.protocolList.at(0).frameLength);
    goodReply();
    queueReadOf(1, 1);
    poll();
    EXPECT_EQ(22, PLC_driver.protocolList.at(0).frameLength);
}

TEST_F(NegativeSettings, AnAccessFlagMeansJudgedButNotFiled)
{
    RW_VAR var = Variable(9, 16, 1);
    var.accessFlag = ON;
    queueRead(var);
    poll();
    EXPECT_EQ(1, reply(WORD_1234));
    EXPECT_EQ(0, word(16));
}

TEST_F(NegativeSettings, ACycleThatIsDoneCountsNothing)
{
    info.cycleDone = ON;
    queueReadOf(1, 1);
    cycles(3);
    EXPECT_EQ(0, PLC_driver.readReplyCount);
    EXPECT_EQ(ON, info.cycleDone);
}

TEST_F(NegativeSettings, ANegativeStationIsNoBroadcast)
{
    queueReadOf(-1, 1);
    EXPECT_EQ("00 00 00 00 00 06 FF 03 00 01 00 01", poll());
    EXPECT_EQ(11, PLC_driver.protocolList.at(0).replyLength);
    goodReply();
    queueWriteOf(-1, 1);
    EXPECT_EQ("00 00 00 00 00 06 FF 06 00 01 00 01", poll());
    EXPECT_EQ(12, PLC_driver.protocolList.at(0).replyLength);
    goodReply();
    queueWrite(Write(8, 35, 1, "01", -1));
    EXPECT_EQ("00 00 00 00 00 06 FF 03 00 02 00 01", poll());
}

TEST_F(NegativeSettings, ANegativeWriteModeWritesTheImageOnly)
{
    info.hostWriteMode = -2;
    QString name("level"), text("100");
    QByteArray data = fromHex("34 12");
    EXPECT_EQ(1, SetRegisterData(&name, 9, &text, 1, &data, 1, 11, 0));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(0x1234, word(100));
}

TEST_F(NegativeSettings, OnlyTheDirectArgument1IsDirect)
{
    RW_VAR var = Write(9, 100, 1, "34 12");
    for (int i = 0; i < 3; ++i)
        AddListWriteVar(&var, ON);
    EXPECT_EQ(2, PLC_driver.writeList.size()) << "the third replaced the second";
    RW_VAR once = Variable(15, 0, 1);
    EXPECT_EQ(0, AddListOnceReadVar(&once, ON));
}

TEST_F(NegativeSettings, AReplyWithANegativeLengthHasTheWrongLength)
{
    info.retryLimit = 0;
    queueReadOf(1, 1);
    poll();
    QByteArray bytes = fromHex(WORD_1234);
    EXPECT_EQ(72, DataCom(&bytes, -11)->result);
}
