// SPDX-License-Identifier: MIT
// The code of the guide, compiled as it stands there and run on the built library. What the guide leaves to the
// runtime, exchange() and ended(), is here: a controller that answers as a test wants, and a list of ends.
#include "guide_code.h"
#include "support/built_files.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

typedef std::vector<std::string> Words;

namespace
{

struct Controller {
    std::function<QByteArray(const QByteArray& frame)> answer;
    Words frames; // without the header up to the length
};

Controller controller;
Words ends; // "7 done", "8 failed"
std::function<void(int key, bool done)> alsoToldOfEnds;

int byteOf(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index));
}

/// As many words as the read asks for, each \a word; the echo of a write.
QByteArray answer(const QByteArray& frame, int word = 0x1111)
{
    if (frame.at(7) != 3)
        return frame.left(4) + QByteArray::fromHex("0006") + frame.mid(6, 6);
    const int words = byteOf(frame, 10) * 256 + byteOf(frame, 11);
    QByteArray reply = frame.left(5);
    reply += static_cast<char>(3 + 2 * words);
    reply += frame.mid(6, 2);
    reply += static_cast<char>(2 * words);
    for (int i = 0; i < words; ++i) {
        reply += static_cast<char>(word >> 8);
        reply += static_cast<char>(word & 0xFF);
    }
    return reply;
}

QByteArray answered(const QByteArray& frame)
{
    return answer(frame);
}

QByteArray silence(const QByteArray& /*frame*/)
{
    return QByteArray();
}

HOST_VAR word(const char* text, int station = 1)
{
    HOST_VAR variable = HOST_VAR();
    variable.area = 9;
    variable.station = static_cast<unsigned char>(station);
    variable.address = text;
    variable.count = 1;
    return variable;
}

QByteArray value(int word)
{
    return QByteArray(1, static_cast<char>(word & 0xFF)) + static_cast<char>(word >> 8);
}

std::string held(const char* text, int station = 1)
{
    QString address(text);
    QByteArray bytes;
    GetRegisterData(0, 9, &address, station, &bytes, 1);
    return bytes.toHex().toStdString();
}

int turns(int number)
{
    int sent = 0;
    for (int i = 0; i < number; ++i)
        sent += takeTurn() ? 1 : 0;
    return sent;
}

} // namespace

QByteArray exchange(const QByteArray& frame, bool /*replyExpected*/)
{
    controller.frames.push_back(frame.mid(6).toHex(' ').toStdString());
    return controller.answer(frame);
}

void ended(int key, bool done)
{
    ends.push_back(std::to_string(key) + (done ? " done" : " failed"));
    if (alsoToldOfEnds)
        alsoToldOfEnds(key, done);
}

/// One driver in the process, so each test begins with what the guide has for another project.
class Guide : public ::testing::Test
{
protected:
    void SetUp() override
    {
        wire();
        forgetProject();
        stationsOff.clear();
        settings = COMINFO();
        wire();
        controller.answer = answered;
        turns(1); // a good reply or none: no failure of another test is left
        controller.frames.clear();
        ends.clear();
        alsoToldOfEnds = nullptr;
    }

    void serveSeveralStations() { settings.multiStation = 1; }
};

TEST_F(Guide, WritesThatWaitAreSentAlthoughTheirStationWasOffMeanwhile)
{
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    EnCommStation(1, 0);
    EnCommStation(1, 1);

    EXPECT_EQ(1, turns(1));
    EXPECT_EQ(Words{"01 06 00 0a 00 01"}, controller.frames);
}

TEST_F(Guide, SwitchingAStationOffTellsOfWhatWaitsAndNothingOfItIsSentLater)
{
    serveSeveralStations();
    const QList<HOST_VAR> variables = {word("100", 1), word("100", 2)};
    refresh(variables);
    ASSERT_TRUE(queueWords(2, "10", value(1), 20));
    ASSERT_TRUE(queueWords(1, "11", value(2), 21));
    ASSERT_TRUE(queueWords(2, "12", value(3), 22));
    ASSERT_EQ(1, readOnce(2, 9, "200", 1, 1));

    switchOff(2, variables);
    EXPECT_EQ((Words{"21 done", "20 failed", "22 failed"}), ends);
    EXPECT_FALSE(queueWords(2, "13", value(4), 23)) << "while it is off";
    switchOn(2);
    EXPECT_TRUE(queueWords(2, "14", value(5), 24));
    turns(6);

    EXPECT_EQ((Words{"21 done", "20 failed", "22 failed", "24 done"}), ends);
    EXPECT_EQ((Words{"01 06 00 0b 00 02", "02 06 00 0e 00 05"}),
              Words(controller.frames.begin(), controller.frames.begin() + 2));
    EXPECT_EQ("1111", held("100", 2)) << "read again";
    EXPECT_EQ("0000", held("200", 2)) << "the one-shot read was discarded";
}

TEST_F(Guide, FiveWritesInARowDoNotHoldBackWhatSwitchingOffDiscards)
{
    const QList<HOST_VAR> variables = {word("100")};
    refresh(variables);
    for (int key = 20; key < 30; ++key)
        ASSERT_TRUE(queueWords(1, QString::number(key), value(key), key));
    turns(5);
    EnCommStation(1, 0);
    EXPECT_EQ(0, turns(20)) << "the sixth write has no turn";
    ASSERT_EQ(5, AddListWriteVar(nullptr, 0));

    switchOff(1, variables);
    EXPECT_EQ(0, AddListWriteVar(nullptr, 0));
    EXPECT_EQ(10u, ends.size());
}

TEST_F(Guide, UnwiringClearsNothing)
{
    refresh(QList<HOST_VAR>() << word("100"));
    turns(1);
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    ASSERT_NE(nullptr, ComCommunication()) << "in flight";
    ASSERT_TRUE(queueWords(1, "11", value(2), 21));

    SetComInfo(nullptr);
    settings = COMINFO();
    wire();
    turns(3);
    EXPECT_EQ((Words{"01 03 00 64 00 01", "01 06 00 0a 00 01", "01 06 00 0b 00 02", "01 03 00 64 00 01"}),
              controller.frames);
    EXPECT_EQ("1111", held("100"));
}

TEST_F(Guide, AnotherProjectFindsNothingOfTheOneBeforeButValues)
{
    refresh(QList<HOST_VAR>() << word("100"));
    turns(1);
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    ASSERT_NE(nullptr, ComCommunication()) << "in flight";
    ASSERT_TRUE(queueWords(1, "11", value(2), 21));
    ASSERT_EQ(1, readOnce(1, 9, "200", 1, 1));
    RW_VAR stuck = RW_VAR();
    stuck.area = 15;
    stuck.station = 9;
    AddListWriteVar(&stuck, 1);
    EnCommStation(3, 0);
    controller.frames.clear();

    forgetProject();
    settings = COMINFO();
    wire();
    EXPECT_EQ(0, turns(20));
    EXPECT_EQ("1111", held("100")) << "as the guide says";

    serveSeveralStations();
    refresh(QList<HOST_VAR>() << word("7", 3));
    turns(1);
    EXPECT_EQ(Words{"03 03 00 07 00 01"}, controller.frames) << "station 3 is on again";
}

TEST_F(Guide, ALibraryThatLeftTheProcessKeepsNoValue)
{
    QTemporaryDir folder; // a copy: the library itself is linked
    const std::string path = folder.filePath("copy.so").toStdString();
    ASSERT_TRUE(QFile::copy(builtDriver(), QString::fromStdString(path)));
    COMINFO info = COMINFO();
    for (int expected : {0, 42}) {
        void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, library) << dlerror();
        const auto wireIt = reinterpret_cast<decltype(&SetComInfo)>(dlsym(library, "SetComInfo"));
        const auto set = reinterpret_cast<decltype(&SetRegisterData)>(dlsym(library, "SetRegisterData"));
        const auto get = reinterpret_cast<decltype(&GetRegisterData)>(dlsym(library, "GetRegisterData"));
        wireIt(&info);
        QString name, address("5");
        QByteArray out, in = value(42);
        get(0, 9, &address, 1, &out, 1);
        EXPECT_EQ(value(0), out) << "in a fresh library";
        set(&name, 9, &address, 1, &in, 1, 0, 0);
        get(0, 9, &address, 1, &out, 1);
        EXPECT_EQ(value(42), out);
        EXPECT_TRUE(unloaded(library, path.c_str())) << expected;
    }
}

// What the lock of the account prevents, step by step: a request that is queued between the end of DataCom() and the
// booking of what it said.
TEST_F(Guide, WithoutALockOfItsOwnTheAccountFailsAWriteThatIsSent)
{
    settings.retryLimit = 0;
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    const Protocol* const next = ComCommunication();
    ASSERT_NE(nullptr, next);
    QByteArray none;

    const int result = DataCom(&none, 0)->result; // the lock of the driver is free from here on
    ASSERT_TRUE(queueWords(1, "11", value(2), 21));
    ASSERT_EQ(41, result);
    endAll(1); // books what waits as failed, as the result says

    EXPECT_EQ((Words{"20 failed", "21 failed"}), ends);
    turns(1);
    EXPECT_EQ(Words{"01 06 00 0b 00 02"}, controller.frames) << "which was told to have failed";
}

namespace
{

const int queueingThreads = 2;
const int writesOfAThread = 6000;

/// Threads queue writes of values that no other write has, while the communication thread loses every third reply.
class AccountUnderStress
{
public:
    void run()
    {
        int frame = 0;
        controller.answer = [&](const QByteArray& request) {
            noteSent(request);
            return ++frame % 3 == 0 ? QByteArray() : answer(request);
        };
        alsoToldOfEnds = [&](int key, bool) { ++toldOf[key]; };
        std::vector<std::thread> queueing;
        std::atomic<int> running{queueingThreads};
        for (int thread = 0; thread < queueingThreads; ++thread)
            queueing.emplace_back([&, thread] {
                for (int i = 0; i < writesOfAThread; ++i)
                    queue(100 + thread * writesOfAThread + i);
                --running;
            });
        while (running != 0 || AddListWriteVar(nullptr, 0) != 0)
            takeTurn();
        for (std::thread& thread : queueing)
            thread.join();
    }

    std::map<int, int> toldOf; // how often, by key
    int queued() const { return m_queued; }
    int sentAfterTheirEnd = 0;

private:
    // Each write has an element and a value of its own: its key.
    void queue(int key)
    {
        while (!queueWords(1, QString::number(key), value(key), key))
            std::this_thread::yield();
        ++m_queued;
    }

    void noteSent(const QByteArray& request)
    {
        QMutexLocker lock(&accountLock);
        sentAfterTheirEnd += toldOf.count(byteOf(request, 10) * 256 + byteOf(request, 11)) != 0 ? 1 : 0;
    }

    std::atomic<int> m_queued{0};
};

} // namespace

TEST_F(Guide, WithItsLockTheAccountTellsOfEachWriteOnceAndNoneIsSentAfterwards)
{
    settings.retryLimit = 1;
    AccountUnderStress account;
    account.run();

    EXPECT_EQ(queueingThreads * writesOfAThread, account.queued());
    EXPECT_EQ(std::size_t(account.queued()), account.toldOf.size());
    for (const auto& told : account.toldOf)
        EXPECT_EQ(1, told.second) << "key " << told.first;
    EXPECT_EQ(0, account.sentAfterTheirEnd);
    EXPECT_TRUE(waiting.isEmpty());
}

TEST_F(Guide, AWriteThatIsReplacedEndsAsOne)
{
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    ASSERT_TRUE(queueWords(1, "10", value(2), 21)); // the first in the list is not replaced
    ASSERT_TRUE(queueWords(1, "10", value(3), 22));
    EXPECT_EQ(Words{"21 failed"}, ends);

    turns(3);
    EXPECT_EQ((Words{"21 failed", "20 done", "22 done"}), ends);
    EXPECT_EQ((Words{"01 06 00 0a 00 01", "01 06 00 0a 00 03"}), controller.frames);
}

TEST_F(Guide, ACallbackUsesTheAccountWithoutItsLock)
{
    static int known = 0;
    RegistCallBackFuncIntf(onceReadDone, [](QList<RW_VAR>*, int, int) -> int {
        known = waiting.size(); // the communication thread holds the lock
        return 0;
    });
    settings.retryLimit = 0;
    controller.answer = silence;
    ASSERT_TRUE(queueWords(1, "10", value(1), 20));
    ASSERT_TRUE(queueWords(1, "11", value(2), 21));
    turns(1);
    EXPECT_EQ(2, known);
    EXPECT_EQ((Words{"20 failed", "21 failed"}), ends);
}

TEST_F(Guide, RecipesReachTheirStationAmongSeveral)
{
    serveSeveralStations();
    refresh(QList<HOST_VAR>() << doubleWords(2, "200", 1) << doubleWords(3, "200", 1));
    controller.answer = [](const QByteArray& frame) {
        return answer(frame, byteOf(frame, 6) == 2 ? 0x2222 : 0x3333);
    };
    turns(2);
    EXPECT_EQ(0x22222222u, doubleWord(2, "200"));
    EXPECT_EQ(0x33333333u, doubleWord(3, "200"));

    ASSERT_EQ(1, readOnce(3, 9, "70", 1, 1));
    turns(1);
    EXPECT_EQ("3333", held("70", 3));

    controller.frames.clear();
    writeDoubleWord(3, "201", 0x12345678, 40);
    writeBitInWord(2, "10.3", true, 41);
    turns(3);
    EXPECT_EQ((Words{"03 10 f7 02 00 02 04 56 78 12 34", "02 03 00 0a 00 01", "02 06 00 0a 22 2a"}),
              controller.frames);
}

TEST_F(Guide, AOneShotReadOfNoStationAmongSeveralIsDoneWithoutData)
{
    serveSeveralStations();
    ASSERT_EQ(1, readOnce(0, 9, "70", 1, 1));
    const Protocol* const next = ComCommunication();
    ASSERT_NE(nullptr, next);
    EXPECT_EQ(0, next->replyLength);
    QByteArray none;
    EXPECT_EQ(PLC_DONE, DataCom(&none, 0)->result);
}

TEST_F(Guide, PausesStartAgainAfterAnAnswerNotAfterAConnection)
{
    ReconnectPause pause;
    int attempts = 0;
    for (int ms = 0; ms < 60000; ms += pause.next()) // each connection is made, and closed at once
        ++attempts;
    EXPECT_EQ(18, attempts) << "at once, 100, 200 .. 3200 ms, then every 5 s";

    pause.answered();
    EXPECT_EQ(0, pause.next());
    EXPECT_EQ(100, pause.next());
}

namespace
{

/// Three requests that lose one reply each, and a fourth that does: how the fourth ended.
std::string fourthLoser(bool grant)
{
    settings.retryLimit = 3;
    for (int key = 20; key < 24; ++key) {
        queueWords(1, QString::number(key), value(key), key);
        if (grant)
            renewRetries(&settings, 3);
        controller.answer = silence;
        takeTurn();
        controller.answer = answered;
        takeTurn();
    }
    return ends.back();
}

} // namespace

TEST_F(Guide, WithoutItsOwnTriesTheFourthLoserIsGivenUpAtItsFirstLoss)
{
    EXPECT_EQ("23 failed", fourthLoser(false));
}

TEST_F(Guide, WithItsOwnTriesARequestDoesNotPayForOthers)
{
    EXPECT_EQ("23 done", fourthLoser(true));

    controller.answer = silence;
    controller.frames.clear();
    queueWords(1, "30", value(30), 30);
    renewRetries(&settings, 3);
    while (ends.back() != "30 failed")
        takeTurn();
    EXPECT_EQ(4u, controller.frames.size()) << "a try and three retries";
}

TEST_F(Guide, APassEndsWithTheLastOfItsRequests)
{
    refresh(QList<HOST_VAR>() << word("0") << word("1000") << word("2000"));
    PassCounter pass;
    pass.begin();
    Words seen;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(takeTurn());
        seen.push_back(pass.cyclicRequestEnded() ? "over" : "on");
    }
    EXPECT_EQ((Words{"on", "on", "over"}), seen);
    EXPECT_EQ((Words{"01 03 00 00 00 01", "01 03 03 e8 00 01", "01 03 07 d0 00 01"}), controller.frames);
}

TEST_F(Guide, ANullNameIsRefusedThoughItIsOnlyCarriedAlong)
{
    QString address("10"), empty;
    QByteArray bytes = value(1);
    EXPECT_EQ(0, SetRegisterData(nullptr, 9, &address, 1, &bytes, 1, 20, 0));
    EXPECT_EQ(1, SetRegisterData(&empty, 9, &address, 1, &bytes, 1, 20, 0));
}
