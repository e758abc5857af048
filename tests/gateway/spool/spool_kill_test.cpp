// SPDX-License-Identifier: MIT
// What is left in the spool of a process that was killed.
#include "tests/gateway/spool/spool_fixture.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace plc
{

namespace
{

using test::numberedFrom;
using test::valuesOf;
using Clock = std::chrono::steady_clock;

const int batch = 10;
const std::chrono::milliseconds promised(200); // so old, a value is on disk

class SpoolOfAKilledProcess : public test::SpoolTest
{
protected:
    ~SpoolOfAKilledProcess() override
    {
        if (m_child > 0)
            kill9();
    }

    /// Runs \a work in a child; what it says with say() can be heard here.
    template <class Work>
    void begin(Work work)
    {
        ASSERT_EQ(0, pipe(m_pipe));
        m_child = fork();
        ASSERT_GE(m_child, 0);
        if (m_child != 0)
            return;
        if (reopen().isEmpty())
            work();
        _exit(1);
    }

    void say(qint64 number) const
    {
        if (write(m_pipe[1], &number, sizeof number) != sizeof number)
            _exit(1);
    }

    qint64 hear() const
    {
        qint64 number = -1;
        const ssize_t size = read(m_pipe[0], &number, sizeof number);
        return size == sizeof number ? number : -1;
    }

    void kill9()
    {
        ::kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
        m_child = -1;
        close(m_pipe[0]);
        close(m_pipe[1]);
    }

    pid_t m_child = -1;
    int m_pipe[2] = {-1, -1};
};

TEST_F(SpoolOfAKilledProcess, HasAllButWhatCameInTheLast200Milliseconds)
{
    begin([this] {
        for (qint64 first = 0;; first += batch) {
            spool->append(numberedFrom(first, batch));
            say(first + batch);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    std::vector<std::pair<Clock::time_point, qint64>> heard;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(700);
    while (Clock::now() < end)
        heard.emplace_back(Clock::now(), hear());
    const Clock::time_point killed = Clock::now();
    kill9();

    qint64 owed = 0;
    for (const auto& [at, count] : heard) {
        if (at + promised <= killed)
            owed = count;
    }
    ASSERT_GT(owed, 0);
    ASSERT_EQ(QString(), reopen());
    const std::vector<qint64> values = valuesOf(spool->take(1000000));
    EXPECT_GE(qint64(values.size()), owed);
    for (std::size_t index = 0; index < values.size(); ++index)
        ASSERT_EQ(qint64(index), values[index]) << "no gap, and in order";
}

TEST_F(SpoolOfAKilledProcess, MarksAsPossibleDuplicatesWhatWasHandedOutAndNothingElse)
{
    begin([this] {
        spool->append(numberedFrom(0, 100));
        spool->flush();
        say(qint64(spool->take(30).size()));
        for (;;)
            pause();
    });
    ASSERT_EQ(30, hear());
    kill9();
    ASSERT_EQ(QString(), reopen());
    const std::vector<TakenSample> taken = spool->take(100);
    ASSERT_EQ(100U, taken.size());
    for (std::size_t index = 0; index < taken.size(); ++index)
        EXPECT_EQ(index < 30, taken[index].handedOutBefore) << index;
}

// Even numbers say up to where values were handed out, odd ones up to where they are about to be acknowledged.
TEST_F(SpoolOfAKilledProcess, HasWhatWasNotAcknowledgedAndKnowsWhatWasHandedOut)
{
    begin([this] {
        std::vector<TakenSample> last;
        for (qint64 first = 0;; first += batch) {
            spool->append(numberedFrom(first, batch));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            if (first % (80 * batch) != 0) // meanwhile the older ones get onto the disk
                continue;
            last = spool->take(80 * batch, last.empty() ? 0 : last.back().sequence);
            say(2 * valuesOf(last).back());
            if (last.size() > 100) {
                say(2 * valuesOf(last)[last.size() - 100] + 1);
                spool->acknowledge(last[last.size() - 100].sequence);
            }
        }
    });
    qint64 handedOut = -1;
    qint64 acknowledged = -1;
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(600);
    const auto take = [&](qint64 said) {
        if (said % 2 == 0)
            handedOut = said / 2;
        else
            acknowledged = said / 2;
    };
    while (Clock::now() < end)
        take(hear());
    ::kill(m_child, SIGKILL);
    fcntl(m_pipe[0], F_SETFL, O_NONBLOCK);
    for (qint64 said = hear(); said >= 0; said = hear())
        take(said);
    kill9();

    ASSERT_GT(acknowledged, 0);
    ASSERT_EQ(QString(), reopen());
    const std::vector<TakenSample> taken = spool->take(1000000);
    ASSERT_FALSE(taken.empty());
    const std::vector<qint64> values = valuesOf(taken);
    EXPECT_LE(values.front(), acknowledged + 1) << "what was not acknowledged is there";
    for (std::size_t index = 0; index < values.size(); ++index) {
        EXPECT_EQ(values.front() + qint64(index), values[index]) << "no gap";
        EXPECT_TRUE(taken[index].handedOutBefore || values[index] > handedOut) << values[index];
    }
}

TEST_F(SpoolOfAKilledProcess, LetsTheNextOneHaveTheFile)
{
    begin([this] {
        say(1);
        for (;;)
            pause();
    });
    ASSERT_EQ(1, hear());
    EXPECT_NE(QString(), reopen()) << "it is held";
    kill9();
    EXPECT_EQ(QString(), reopen());
}

} // namespace

} // namespace plc
