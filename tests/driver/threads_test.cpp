// One communication thread polls and answers, other threads queue, read, write and switch meanwhile. Meant
// for the thread sanitizer; elsewhere it shows that nothing is lost, doubled or torn.
#include "cycle.h"

#include <QMutex>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <thread>

namespace
{

const int WRITERS = 2;
const int WRITES_EACH = 400; // below the 1024 that the list holds, so none is dropped
const int READERS = 2;
const int READS_EACH = 300;
const int CYCLIC_READS = 8;
const int OFF_AND_ON = 77; // a station that is switched all the time; only cyclic reads use it
const auto LONG = std::chrono::seconds(60);

// Counts of one-shot reports by key; the callback runs on the communication thread.
std::map<int, int>& Reports()
{
    static std::map<int, int> reports;
    return reports;
}

int CountReport(int, int hostKey, int, int status)
{
    Reports()[hostKey] += status == 1 ? 1 : 1000;
    return 0;
}

int IgnoreList(QList<RW_VAR>*, int, int)
{
    return 0;
}

// A controller that answers every read with registers that all hold 0x1111, and echoes every write.
QByteArray AnswerTo(const Protocol& request)
{
    if (request.replyLength == 12)
        return request.frame.left(12);
    QByteArray reply = request.frame.left(8);
    reply.append(static_cast<char>(request.dataLength));
    reply.append(QByteArray(request.dataLength, '\x11'));
    return reply;
}

enum Losses { NO_LOSS, EVERY_OTHER_REPLY };

class Threads : public CycleTest
{
protected:
    void SetUp() override
    {
        CycleTest::SetUp();
        Reports().clear();
        RegistCallBackFuncIntf(CountReport, IgnoreList);
    }

    void run(const std::function<void()>& work) { threads_.emplace_back(work); }

    // The communication thread's loop: ends when the other threads have and nothing is queued any more.
    void communicate(Losses losses = NO_LOSS)
    {
        int turn = 0;
        const auto end = std::chrono::steady_clock::now() + LONG;
        while (std::chrono::steady_clock::now() < end) {
            const bool last = othersDone_;
            const Protocol* next = ComCommunication();
            if (next)
                answer(*next, losses == EVERY_OTHER_REPLY && ++turn % 2 == 1);
            if (last && queuesAreEmpty())
                return;
        }
        ADD_FAILURE() << "the queues did not run empty";
    }

    void joinAll()
    {
        for (std::thread& thread : threads_)
            thread.join();
        othersDone_ = true;
    }

    std::map<int, int> writesDone; // by key, the communication thread's own
    std::map<int, int> readsDone;
    int failures = 0;

private:
    void answer(const Protocol& request, bool lost)
    {
        QByteArray reply = lost ? QByteArray() : AnswerTo(request);
        const RW_VAR* result = DataCom(&reply, reply.size());
        if (result->result != (lost ? 0 : 1))
            ++failures;
        else if (!lost && PLC_driver.protocolList.isEmpty())
            count(*result);
    }

    void count(const RW_VAR& result)
    {
        if (PLC_driver.requestKind == WRITE)
            ++writesDone[result.hostKey];
        else if (PLC_driver.requestKind == ONCE_READ)
            ++readsDone[result.hostKey];
    }

    static bool queuesAreEmpty()
    {
        QMutexLocker lock(&PLC_driver.listMutex);
        return PLC_driver.writeList.isEmpty() && PLC_driver.onceReadList.isEmpty();
    }

    std::vector<std::thread> threads_;
    std::atomic<bool> othersDone_{false};
};

// Every third request is queued directly, without the search for an equal one.
int Direct(int i)
{
    return i % 3 == 0;
}

// Every key and every element is used once, so no queued write may be replaced by another.
void QueueWrites(int writer)
{
    for (int i = 0; i < WRITES_EACH; ++i) {
        const int key = 10000 * (writer + 1) + i;
        RW_VAR var = Keyed(i % 4 == 0 ? Write(8, 16 * key, 1, "01") : Write(10, key, 1, "34 12"), key);
        AddListWriteVar(&var, Direct(i));
    }
}

void QueueOnceReads(int reader)
{
    for (int i = 0; i < READS_EACH; ++i) {
        const int key = 30000 + 10000 * reader + i;
        RW_VAR var = Keyed(Variable(11, 1000 * reader + i, 1), key);
        var.name2 = QString::number(var.address);
        AddListOnceReadVar(&var, Direct(i));
    }
}

// A word is 0 or what the controller says, never half of it. \return torn words
int WatchRegisters(int rounds)
{
    int torn = 0;
    QString text("100");
    for (int i = 0; i < rounds; ++i) {
        QByteArray out;
        GetRegisterData(0, 9, &text, 1, &out, 4);
        for (int w = 0; w < 4; ++w)
            torn += out.at(2 * w) != out.at(2 * w + 1);
    }
    return torn;
}

void RebuildReadList(int rounds)
{
    for (int i = 0; i < rounds; ++i) {
        QList<HOST_VAR> variables;
        for (int v = 0; v < i % 10; ++v) {
            HOST_VAR var = HOST_VAR();
            var.area = 10;
            var.station = static_cast<unsigned char>(1 + v % 2);
            var.address = QString::number(100 * v);
            var.count = 1;
            variables.append(var);
        }
        ReCreatReadVarList(&variables);
    }
}

void SwitchStations(int rounds)
{
    for (int i = 0; i < rounds; ++i) {
        EnCommStation(OFF_AND_ON, i & 1);
        EnCommStation(OFF_AND_ON + 1, 0);
    }
    EnCommStation(-1, 1);
}

// \return how many of the keys were not seen exactly once
int NotOnce(const std::map<int, int>& seen, int firstKey, int count)
{
    int wrong = 0;
    for (int key = firstKey; key < firstKey + count; ++key) {
        const auto found = seen.find(key);
        wrong += found == seen.end() || found->second != 1;
    }
    return wrong;
}

} // namespace

TEST_F(Threads, EveryWriteAndOneShotReadIsAnsweredExactlyOnce)
{
    for (int key = 0; key < CYCLIC_READS; ++key)
        queueReadOf(key % 2 ? OFF_AND_ON : 1, 100 + key);
    std::atomic<int> torn(0);
    std::thread communication([this] { communicate(); });
    for (int writer = 0; writer < WRITERS; ++writer)
        run([writer] { QueueWrites(writer); });
    for (int reader = 0; reader < READERS; ++reader)
        run([reader] { QueueOnceReads(reader); });
    run([&torn] { torn += WatchRegisters(3000); });
    run([] { SwitchStations(3000); });
    joinAll();
    communication.join();

    EXPECT_EQ(0, failures);
    EXPECT_EQ(0, torn);
    EXPECT_EQ(size_t(WRITERS * WRITES_EACH), writesDone.size());
    EXPECT_EQ(size_t(READERS * READS_EACH), readsDone.size());
    for (int writer = 0; writer < WRITERS; ++writer)
        EXPECT_EQ(0, NotOnce(writesDone, 10000 * (writer + 1), WRITES_EACH));
    for (int reader = 0; reader < READERS; ++reader) {
        EXPECT_EQ(0, NotOnce(readsDone, 30000 + 10000 * reader, READS_EACH));
        EXPECT_EQ(0, NotOnce(Reports(), 30000 + 10000 * reader, READS_EACH));
    }
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[4][10001]);
    EXPECT_EQ(0x1111, PLC_driver.image.wordArea[1][0]);
}

// The runtime's own road for values: writes by address text that are cut into blocks, in multi-station mode,
// while other threads read values and rebuild the list of cyclic reads.
TEST_F(Threads, RegistersOfTwoStationsAreWrittenAndReadFromSeveralThreads)
{
    info.multiStation = 1;
    info.maxBlockCount = 5;
    std::thread communication([this] { communicate(); });
    for (int station = 1; station <= 2; ++station)
        run([station] {
            QString name("level");
            for (int i = 0; i < 40; ++i) {
                QString text = QString::number(20 * i);
                QByteArray data(40, static_cast<char>(station));
                SetRegisterData(&name, 9, &text, static_cast<unsigned>(station), &data, 20,
                                1000 * station + i, 0);
            }
        });
    std::atomic<int> torn(0);
    run([&torn] {
        QString text("0");
        for (int i = 0; i < 200; ++i) {
            QByteArray out;
            GetRegisterData(0, 9, &text, 2, &out, 40);
            for (int w = 0; w < 40; ++w)
                torn += out.at(2 * w) != out.at(2 * w + 1);
        }
    });
    run([] { RebuildReadList(200); });
    joinAll();
    communication.join();

    EXPECT_EQ(0, failures);
    EXPECT_EQ(0, torn);
    // 20 words in blocks of 5 are four requests with one key.
    for (int station = 1; station <= 2; ++station)
        for (int i = 0; i < 40; ++i)
            EXPECT_EQ(4, writesDone[1000 * station + i]) << station << ", " << i;
    QString text("780");
    QByteArray out;
    GetRegisterData(0, 9, &text, 2, &out, 20);
    EXPECT_EQ(Hex(QByteArray(40, '\2')), Hex(out));
}

// lastFailed is the one word that writers look at without a lock while the communication thread sets it.
TEST_F(Threads, WritesQueuedWhileRepliesFailAndRecoverAreAllAnswered)
{
    const int WRITES = 500;
    info.retryLimit = 1000000;
    std::thread communication([this] { communicate(EVERY_OTHER_REPLY); });
    run([] {
        QString name("level");
        for (int i = 0; i < WRITES; ++i) {
            QString text = QString::number(i);
            QByteArray data = Bytes("21 43");
            SetRegisterData(&name, 9, &text, 1, &data, 1, 5000 + i, 0);
        }
    });
    joinAll();
    communication.join();

    EXPECT_EQ(0, NotOnce(writesDone, 5000, WRITES));
    EXPECT_EQ(0x4321, word(0));
    EXPECT_EQ(0x4321, word(499));
}
