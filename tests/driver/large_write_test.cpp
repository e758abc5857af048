// SPDX-License-Identifier: MIT
// A write of many pieces on one thread, and what the communication thread gets done meanwhile.
#include "threads.h"

#include "driver/communication_turn.h"

#include <sys/resource.h>

namespace
{

const int PIECES = 5;

// Another thread that holds the lock of the image, from the beginning until it is released.
class ImageHolder
{
public:
    ImageHolder()
    {
        while (!m_held)
            std::this_thread::yield();
    }

    ~ImageHolder() { release(); }

    void release()
    {
        m_released = true;
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    void hold()
    {
        QMutexLocker lock(&PLC_driver.imageMutex);
        m_held = true;
        while (!m_released)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    std::atomic<bool> m_held{false};
    std::atomic<bool> m_released{false};
    std::thread m_thread{[this] { hold(); }};
};

// How often this process has gone to sleep.
long Sleeps()
{
    rusage used;
    getrusage(RUSAGE_SELF, &used);
    return used.ru_nvcsw;
}

class LargeWrite : public CycleTest
{
protected:
    void SetUp() override
    {
        CycleTest::SetUp();
        info.maxBlockCount = 2;
    }

    void TearDown() override
    {
        if (m_writer.joinable())
            m_writer.join();
        CycleTest::TearDown();
    }

    /// Begins a write of PIECES pieces on another thread.
    void begin()
    {
        m_writer = std::thread([] {
            QString name("level");
            QString text("100");
            QByteArray data(4 * PIECES, '\1');
            SetRegisterData(&name, 9, &text, 1, &data, 2 * PIECES, 1, 0);
        });
    }

    void end() { m_writer.join(); }

    /// \return entries in the write list, -1 while the lists stay locked for 5 s
    static int queued()
    {
        if (!PLC_driver.listMutex.tryLock(5000))
            return -1;
        const int size = PLC_driver.writeList.size();
        PLC_driver.listMutex.unlock();
        return size;
    }

    /// Waits until something is queued. \return entries in the write list, -1 while the lists stay locked
    static int firstQueued()
    {
        int size = 0;
        for (int i = 0; size == 0 && i < 5000; ++i) {
            size = queued();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return size;
    }

private:
    std::thread m_writer;
};

} // namespace

// The writer is stopped where it mirrors its first piece: what it holds there it would hold all along.
TEST_F(LargeWrite, OfAnyModeHoldsNoListLockWhileAPieceIsMirroredAfterAFailure)
{
    for (int multiStation : {0, 1}) {
        SCOPED_TRACE(multiStation);
        SetUp();
        info.multiStation = multiStation;
        PLC_driver.lastFailed = 1;
        ImageHolder image;
        begin();

        EXPECT_EQ(1, firstQueued());
        if (!HasFailure()) {
            EXPECT_EQ("00 00 00 00 00 0B 01 10 00 64 00 02 04 01 01 01 01", poll());
        }
        EXPECT_EQ(1, queued());

        image.release();
        end();
        EXPECT_EQ(PIECES, queued());
    }
}

TEST_F(LargeWrite, WaitsAfterAPieceUntilTheCommunicationThreadIsThrough)
{
    {
        const CommunicationTurn turn; // as if it waited for the lists
        begin();

        EXPECT_EQ(1, firstQueued());
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(1, queued()) << "another piece went before the communication thread";
    }
    end();
    EXPECT_EQ(PIECES, queued());
}

TEST_F(LargeWrite, WaitsForTheCallInProgressOnlyNotForTheNext)
{
    CommunicationTurn* turn = new CommunicationTurn;
    std::thread waiter(LetCommunicationPass);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto begun = std::chrono::steady_clock::now();
    delete turn;
    const CommunicationTurn next;

    waiter.join();
    EXPECT_GT(std::chrono::milliseconds(900), std::chrono::steady_clock::now() - begun) << "it waited on";
}

// A callback of the runtime may keep the communication thread inside for as long as it likes.
TEST_F(LargeWrite, GoesOnAfterASecondOfSleepWhileTheCommunicationThreadStaysInside)
{
    const CommunicationTurn turn;
    const auto begun = std::chrono::steady_clock::now();
    const long slept = Sleeps();
    LetCommunicationPass();
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - begun;
    EXPECT_LE(0.9, waited.count());
    EXPECT_GT(1.9, waited.count());
    EXPECT_LT(slept + 100, Sleeps()) << "it kept the processor from the thread that it waits for";
}

TEST_F(LargeWrite, OfOnePieceWaitsForNobody)
{
    const CommunicationTurn turn;
    QString name("level");
    QString text("100");
    QByteArray data(4, '\1');

    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(1, SetRegisterData(&name, 9, &text, 1, &data, 2, 1, 0));
    EXPECT_GT(std::chrono::milliseconds(900), std::chrono::steady_clock::now() - begun)
        << "it waited in vain";
}

TEST_F(LargeWrite, EveryCallOfTheCommunicationThreadEndsItsTurn)
{
    const auto between = [] { return PLC_driver.communicationTurn % 2 == 0; };
    EXPECT_TRUE(between());
    poll();
    EXPECT_TRUE(between());
    queueWriteOf(1, 5);
    poll();
    EXPECT_TRUE(between());
    poll();
    EXPECT_TRUE(between());
    timeOut();
    EXPECT_TRUE(between());
    goodReply();
    EXPECT_TRUE(between());
}

namespace
{

// The callbacks run inside the two calls.
bool wasInside;

int noteInside(QList<RW_VAR>*, int, int)
{
    wasInside = PLC_driver.communicationTurn % 2 != 0;
    return 0;
}

int throwInside(QList<RW_VAR>*, int, int)
{
    throw 1;
}

} // namespace

TEST_F(LargeWrite, TheTurnOfTheCommunicationThreadLastsAsLongAsItsCall)
{
    PLC_driver.listDoneCallback = noteInside;
    info.retryLimit = 0;
    queueWriteOf(1, 5);

    wasInside = false;
    poll();
    EXPECT_TRUE(wasInside);
    wasInside = false;
    timeOut();
    EXPECT_TRUE(wasInside);
}

TEST_F(LargeWrite, ACallThatAnExceptionEndsEndsItsTurnToo)
{
    PLC_driver.listDoneCallback = throwInside;
    queueWriteOf(1, 5);
    poll();
    EXPECT_EQ(0u, PLC_driver.communicationTurn % 2);
}

// Every poll of a loop that does nothing else gets between two pieces, and the write is queued whole.
TEST_F(LargeWrite, BesideAThreadThatPollsWithoutPauseIsQueuedWhole)
{
    std::atomic<bool> done(false);
    int polls = 0;
    std::thread communication([&] {
        while (!done) {
            const Protocol* next = ComCommunication();
            polls += next ? 1 : 0;
            if (next)
                goodReply();
        }
    });
    for (int i = 0; i < 20; ++i) {
        begin();
        end();
    }
    done = true;
    communication.join();
    while (cycle() != -1 || !PLC_driver.writeList.isEmpty())
        ++polls;

    EXPECT_EQ(0x0101, word(100));
    EXPECT_EQ(0x0101, word(100 + 2 * PIECES - 1));
    EXPECT_EQ(0, word(100 + 2 * PIECES));
    EXPECT_GE(polls, PIECES);
}
