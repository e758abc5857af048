// SPDX-License-Identifier: MIT
#include "cycle.h"

#include <cstring>
#include <memory>

namespace
{

class HostInterface : public CycleTest
{
};

const int WORDS = sizeof(COMINFO) / sizeof(int);

COMINFO Filled(int value)
{
    int words[WORDS];
    for (int& w : words)
        w = value;
    COMINFO block;
    std::memcpy(&block, words, sizeof block);
    return block;
}

int NoOnceRead(int, int, int, int)
{
    return 0;
}

int NoListDone(QList<RW_VAR>*, int, int)
{
    return 0;
}

} // namespace

TEST_F(HostInterface, QueryFinishFlagIs1BeforeAndAfterAnyOtherCall)
{
    EXPECT_EQ(1, QueryFinishFlag());
    queueReadOf(1, 5);
    poll();
    EXPECT_EQ(1, QueryFinishFlag());
    for (int i = 0; i <= RETRY_LIMIT; ++i)
        timeOut();
    EXPECT_EQ(1, QueryFinishFlag());
    SetComInfo(nullptr);
    EXPECT_EQ(1, QueryFinishFlag());
}

TEST_F(HostInterface, SetComInfoClearsTheWordsAt40And52AndNoOther)
{
    COMINFO block = Filled(0x5A5A5A5A);
    SetComInfo(&block);

    int words[WORDS];
    std::memcpy(words, &block, sizeof block);
    for (int i = 0; i < WORDS; ++i)
        EXPECT_EQ(i == 10 || i == 13 ? 0 : 0x5A5A5A5A, words[i]) << "offset " << 4 * i;
    EXPECT_EQ(&block, PLC_driver.comInfo);
}

TEST_F(HostInterface, SetComInfoReplacesTheBlock)
{
    COMINFO other = COMINFO();
    queueOnce(Variable(9, 1, 1));
    SetComInfo(&other);

    poll();

    EXPECT_EQ(1, other.framesExpected);
    EXPECT_EQ(0, info.framesExpected);
    SetComInfo(&info);
}

TEST_F(HostInterface, SetComInfoTouchesNothingThatIsQueued)
{
    queueReadOf(1, 1);
    queueWriteOf(1, 2);
    poll();

    SetComInfo(&info);

    EXPECT_EQ(1, PLC_driver.readList.size());
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1, frameCount());
}

TEST_F(HostInterface, CallbacksAreStoredInTheirOrderAndReplaced)
{
    RegistCallBackFuncIntf(NoOnceRead, NoListDone);
    EXPECT_EQ(NoOnceRead, PLC_driver.onceReadDoneCallback);
    EXPECT_EQ(NoListDone, PLC_driver.listDoneCallback);

    RegistCallBackFuncIntf(nullptr, nullptr);
    EXPECT_EQ(nullptr, PLC_driver.onceReadDoneCallback);
    EXPECT_EQ(nullptr, PLC_driver.listDoneCallback);
}

TEST_F(HostInterface, NullCallbacksAreSkipped)
{
    info.retryLimit = 0;
    RegistCallBackFuncIntf(nullptr, nullptr);
    queueWriteOf(1, 2);
    queueOnceOf(1, 3);

    EXPECT_EQ(2, cycle());
    EXPECT_EQ(3, cycle());
    queueOnceOf(1, 4);
    poll();
    EXPECT_EQ(45, timeOut());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(HostInterface, EachCallbackWorksWithoutTheOther)
{
    info.retryLimit = 0;
    RegistCallBackFuncIntf(PLC_driver.onceReadDoneCallback, nullptr);
    queueOnceOf(1, 3);
    poll();
    timeOut();
    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 3, 0, 2}}), onceReadDoneCalls());
    EXPECT_TRUE(listDoneCalls().empty());
}

TEST_F(HostInterface, FlashLocalRegisterKeepsThreePointersInTheirOrder)
{
    int bits, words, third;
    FlashLocalRegister(&bits, &words, &third);
    EXPECT_EQ(&bits, LB);
    EXPECT_EQ(&words, LW);
    EXPECT_EQ(&third, RWI);

    FlashLocalRegister(nullptr, &bits, &words);
    EXPECT_EQ(nullptr, LB);
    EXPECT_EQ(&bits, LW);
    EXPECT_EQ(&words, RWI);
}

TEST_F(HostInterface, AFreshDriverHasNothingToSendAndSaysTheCycleIsDone)
{
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, info.cycleDone);
}

TEST_F(HostInterface, AFreshDriverAnswersAReplyWithItsResultRecordAnd1)
{
    QByteArray bytes = fromHex("00 01");

    EXPECT_EQ(&PLC_driver.retVar, DataCom(&bytes, 2));
    EXPECT_EQ(1, PLC_driver.retVar.result);
}

// Without a settings block.

namespace
{

class NoSettings : public CycleTest
{
protected:
    void SetUp() override
    {
        CycleTest::SetUp();
        SetComInfo(nullptr);
    }
};

} // namespace

TEST_F(NoSettings, NothingIsSent)
{
    queueWriteOf(1, 1);
    queueOnceOf(1, 2);
    queueReadOf(1, 3);

    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(Keys{1}, keys(PLC_driver.writeList));
    EXPECT_EQ(Keys{2}, keys(PLC_driver.onceReadList));
    EXPECT_EQ(Keys{3}, keys(PLC_driver.readList));
    EXPECT_TRUE(listDoneCalls().empty());
}

TEST_F(NoSettings, AReplyIsAnswered1AndChangesNothing)
{
    SetComInfo(&info);
    queueReadOf(1, 3);
    poll();
    SetComInfo(nullptr);

    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 12 34"));
    EXPECT_EQ(1, timeOut());
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ(0, PLC_driver.lastFailed);
    EXPECT_EQ(0, word(3));
}

TEST_F(NoSettings, OneShotReadsByAddressTextAreRefusedAndTheRecordIsLeftAlone)
{
    RW_VAR var = Keyed(Variable(8, 7, 20, 5), 1);
    var.name2 = "10.3";
    var.storeSelector = 6;

    EXPECT_EQ(0, AddListOnceReadVar(&var, 0));
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ(8, var.area);
    EXPECT_EQ(7, var.address);
    EXPECT_EQ(20, var.count);
    EXPECT_EQ(5, var.station);
    EXPECT_EQ(6, var.storeSelector);
}

TEST_F(NoSettings, WholeRecordsAreStillQueued)
{
    RW_VAR var = Variable(9, 1, 1);

    EXPECT_EQ(1, AddListReadVar(&var));
    EXPECT_EQ(1, AddListWriteVar(&var, 0));
    EXPECT_EQ(2, AddListWriteVar(&var, 1));
    EXPECT_EQ(1, AddListOnceReadVar(&var, 1));
}

TEST_F(NoSettings, RegistersAreNeitherReadNorWritten)
{
    QString name("x"), text("10");
    QByteArray data = fromHex("34 12"), out = fromHex("AB");

    EXPECT_EQ(0, SetRegisterData(&name, 9, &text, 1, &data, 1, 0, 0));
    EXPECT_EQ(0u, GetRegisterData(0, 9, &text, 1, &out, 1));
    EXPECT_EQ("AB", toHex(out));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(0, word(10));
}

TEST_F(NoSettings, TheReadListIsNotRebuilt)
{
    queueReadOf(1, 3);
    QList<HOST_VAR> list;
    HOST_VAR var = HOST_VAR();
    var.area = 9;
    var.address = "10";
    var.count = 1;
    list.append(var);

    EXPECT_EQ(0, ReCreatReadVarList(&list));
    EXPECT_EQ(Keys{3}, keys(PLC_driver.readList));
}

TEST_F(NoSettings, StationsAreStillSwitched)
{
    EnCommStation(3, 0);

    EXPECT_TRUE(PLC_driver.stationMap.contains(3));
}

TEST_F(HostInterface, NullRecordsAreRefusedWithTheSizeOfTheListOr0)
{
    queueReadOf(1, 1);
    queueWriteOf(1, 1);
    queueOnceOf(1, 1);

    EXPECT_EQ(1, AddListReadVar(nullptr));
    EXPECT_EQ(1, AddListWriteVar(nullptr, 0));
    EXPECT_EQ(1, AddListWriteVar(nullptr, 1));
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 0));
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 1));
    EXPECT_EQ(0, ReCreatReadVarList(nullptr));
    EXPECT_EQ(1, PLC_driver.readList.size());
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(1, PLC_driver.onceReadList.size());
}
