// SPDX-License-Identifier: MIT
// One communication thread polls and answers, other threads queue, read, write and switch meanwhile.
#include "threads.h"

namespace
{

const int WRITERS = 2;
const int WRITES_EACH = 400; // below the 1024 that the list holds, so none is dropped
const int READERS = 2;
const int READS_EACH = 300;
const int CYCLIC_READS = 8;
const int OFF_AND_ON = 77; // a station that is switched all the time; only cyclic reads use it

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
        torn += TornWords(out);
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
        EXPECT_EQ(0, NotOnce(reports(), 30000 + 10000 * reader, READS_EACH));
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
            torn += TornWords(out);
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
    EXPECT_EQ(toHex(QByteArray(40, '\2')), toHex(out));
}

// lastFailed is the one word that writers look at without a lock while the communication thread sets it.
TEST_F(Threads, WritesQueuedWhileRepliesFailAndRecoverAreAllAnswered)
{
    const int QUEUED = 500;
    info.retryLimit = 1000000;
    std::thread communication([this] { communicate(EVERY_OTHER_REPLY); });
    run([] {
        QString name("level");
        for (int i = 0; i < QUEUED; ++i) {
            QString text = QString::number(i);
            QByteArray data = fromHex("21 43");
            SetRegisterData(&name, 9, &text, 1, &data, 1, 5000 + i, 0);
        }
    });
    joinAll();
    communication.join();

    EXPECT_EQ(0, NotOnce(writesDone, 5000, QUEUED));
    EXPECT_EQ(0x4321, word(0));
    EXPECT_EQ(0x4321, word(499));
}
