// SPDX-License-Identifier: MIT
#include "tests/gateway/spool/spool_fixture.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <deque>
#include <random>

#include <sys/resource.h>
#include <unistd.h>

namespace plc
{

namespace
{

using test::numbered;
using test::numberedFrom;
using test::valuesOf;
using testing::ElementsAre;
using testing::HasSubstr;

class SpoolQueue : public test::SpoolTest
{
};

TEST_F(SpoolQueue, GivesWhatWasAppendedInItsOrder)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 3));
    spool->append(numberedFrom(4, 2));
    EXPECT_THAT(valuesOf(spool->take(4)), ElementsAre(1, 2, 3, 4));
}

TEST_F(SpoolQueue, GivesTheSameAgainAndSaysSoUntilItIsAcknowledged)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 3));
    const std::vector<TakenSample> first = spool->take(2);
    EXPECT_FALSE(first.at(1).handedOutBefore);
    const std::vector<TakenSample> second = spool->take(3);
    EXPECT_THAT(valuesOf(second), ElementsAre(1, 2, 3));
    EXPECT_TRUE(second.at(1).handedOutBefore);
    EXPECT_FALSE(second.at(2).handedOutBefore);
    spool->acknowledge(second.at(1).sequence);
    EXPECT_THAT(valuesOf(spool->take(3)), ElementsAre(3));
}

TEST_F(SpoolQueue, GoesOnBehindASampleWhenAskedTo)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 4));
    const std::vector<TakenSample> first = spool->take(2);
    EXPECT_THAT(valuesOf(spool->take(9, first.back().sequence)), ElementsAre(3, 4));
}

TEST_F(SpoolQueue, WhatWasNotTakenCannotBeAcknowledged)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 3));
    spool->acknowledge(99);
    EXPECT_EQ(3U, spool->figures().depth);
}

TEST_F(SpoolQueue, AfterARestartItGoesOnWhereItWas)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 5));
    const std::vector<TakenSample> taken = spool->take(3);
    spool->acknowledge(taken.at(1).sequence);
    ASSERT_EQ(QString(), reopen());
    EXPECT_EQ(3U, spool->figures().depth);
    const std::vector<TakenSample> again = spool->take(9);
    EXPECT_THAT(valuesOf(again), ElementsAre(3, 4, 5));
    EXPECT_TRUE(again.at(0).handedOutBefore);
    EXPECT_FALSE(again.at(1).handedOutBefore);
    EXPECT_EQ(1003, again.at(0).sample.at);
}

TEST_F(SpoolQueue, AfterARestartVariablesAreFoundByTheirNames)
{
    ASSERT_EQ(QString(), reopen());
    spool->append({numbered(10, 0), numbered(20, 1), numbered(30, 2)});
    names = QStringList{QStringLiteral("new"), QStringLiteral("text"), QStringLiteral("speed"),
                        QStringLiteral("count")};
    ASSERT_EQ(QString(), reopen());
    const std::vector<TakenSample> taken = spool->take(9);
    ASSERT_EQ(3U, taken.size());
    EXPECT_EQ(3U, taken[0].sample.variable);
    EXPECT_EQ(2U, taken[1].sample.variable);
    EXPECT_EQ(1U, taken[2].sample.variable);
}

TEST_F(SpoolQueue, ValuesOfNamesThatAreGoneAreDroppedCountedAndTold)
{
    ASSERT_EQ(QString(), reopen());
    spool->append({numbered(10, 0), numbered(20, 1), numbered(11, 0), numbered(30, 2)});
    names = QStringList{QStringLiteral("text"), QStringLiteral("count")};
    ASSERT_EQ(QString(), reopen());
    EXPECT_EQ(2U + 1U, spool->figures().depth);
    EXPECT_EQ(1U, spool->figures().dropped);
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("1 value was dropped from the spool"));
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("(speed)"));
    EXPECT_THAT(valuesOf(spool->take(9)), ElementsAre(10, 11, 30));
    ASSERT_EQ(QString(), reopen());
    EXPECT_EQ(1U, spool->figures().dropped) << "once only, and over restarts";
}

TEST_F(SpoolQueue, WhatWasHandedOutStillLooksSoWhenNamesHaveGone)
{
    ASSERT_EQ(QString(), reopen());
    spool->append({numbered(10, 0), numbered(20, 1), numbered(11, 0), numbered(12, 0)});
    spool->take(3);
    names.removeAt(1);
    ASSERT_EQ(QString(), reopen());
    const std::vector<TakenSample> taken = spool->take(9);
    EXPECT_THAT(valuesOf(taken), ElementsAre(10, 11, 12));
    EXPECT_TRUE(taken.at(0).handedOutBefore);
    EXPECT_TRUE(taken.at(1).handedOutBefore);
}

TEST_F(SpoolQueue, WhatIsAcknowledgedAtOnceNeverTouchesTheDisk)
{
    ASSERT_EQ(QString(), reopen());
    for (int round = 0; round < 50; ++round) {
        spool->append(numberedFrom(round * 10, 10));
        spool->acknowledge(spool->take(10).back().sequence);
    }
    EXPECT_TRUE(spool->flush());
    EXPECT_EQ(0, spool->figures().bytes);
    EXPECT_EQ(0U, spool->figures().depth);
}

TEST_F(SpoolQueue, FiguresTellHowMuchWaitsAndSinceWhen)
{
    ASSERT_EQ(QString(), reopen());
    EXPECT_EQ(-1, spool->figures().oldestAt);
    now = 7000;
    spool->append(numberedFrom(1, 10));
    now = 8000;
    spool->append(numberedFrom(11, 10));
    ASSERT_TRUE(spool->flush());
    EXPECT_EQ(20U, spool->figures().depth);
    EXPECT_EQ(7000, spool->figures().oldestAt);
    EXPECT_GT(spool->figures().bytes, 20);
    spool->acknowledge(spool->take(20).back().sequence);
    ASSERT_TRUE(spool->flush());
    EXPECT_EQ(-1, spool->figures().oldestAt);
    EXPECT_EQ(0, spool->figures().bytes);
}

TEST_F(SpoolQueue, WhenItIsFullTheOldestIsDroppedCountedAndTold)
{
    SpoolLimits limits;
    limits.bytes = 200 * 1000;
    limits.memoryBytes = 50 * 1000;
    ASSERT_EQ(QString(), reopen(limits));
    const int batch = 500;
    const int batches = 100; // some 11 bytes a sample
    for (int round = 0; round < batches; ++round) {
        spool->append(numberedFrom(round * batch, batch));
        ASSERT_TRUE(spool->flush());
    }
    const SpoolFigures figures = spool->figures();
    EXPECT_LE(figures.bytes, limits.bytes);
    EXPECT_GT(figures.bytes, limits.bytes / 2);
    EXPECT_GT(figures.dropped, 0U);
    EXPECT_EQ(quint64(batch * batches), figures.depth + figures.dropped);
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("dropped, the oldest"));
    EXPECT_EQ(1, told.size()) << "not with each commit";
    EXPECT_EQ(qint64(figures.dropped), valuesOf(spool->take(1)).at(0)) << "the oldest that is left";
    EXPECT_EQ(figures.depth, spool->take(batch * batches).size());
    EXPECT_LT(QFileInfo(path()).size(), 2 * limits.bytes);
    ASSERT_EQ(QString(), reopen(limits));
    EXPECT_EQ(figures.dropped, spool->figures().dropped);
}

TEST_F(SpoolQueue, WhatIsTooOldIsDroppedCountedAndTold)
{
    SpoolLimits limits;
    limits.ageMs = 60000;
    ASSERT_EQ(QString(), reopen(limits));
    spool->append(numberedFrom(1, 10));
    ASSERT_TRUE(spool->flush());
    now = now + 60001;
    spool->append(numberedFrom(11, 5));
    ASSERT_TRUE(spool->flush());
    EXPECT_THAT(valuesOf(spool->take(9)), ElementsAre(11, 12, 13, 14, 15)) << everythingTold().toStdString();
    EXPECT_EQ(10U, spool->figures().dropped);
}

TEST_F(SpoolQueue, AFileThatAnotherHoldsIsRefused)
{
    ASSERT_EQ(QString(), reopen());
    Spool other;
    EXPECT_THAT(other.open(path(), names).toStdString(), HasSubstr("another process holds it"));
}

TEST_F(SpoolQueue, AFolderThatIsNotThereIsNamed)
{
    const QString nowhere = folder.filePath(QStringLiteral("none/line1.spool"));
    Spool other;
    EXPECT_THAT(other.open(nowhere, names).toStdString(), HasSubstr(nowhere.toStdString()));
}

TEST_F(SpoolQueue, AFileThatMayNotBeWrittenIsRefused)
{
    ASSERT_EQ(QString(), reopen());
    spool.reset();
    ASSERT_TRUE(QFile::setPermissions(path(), QFileDevice::ReadOwner | QFileDevice::ReadOther));
    ASSERT_TRUE(QFile::setPermissions(folder.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                                         QFileDevice::ReadOther | QFileDevice::ExeOther));
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(0, seteuid(65534)); // root may write everything
    }
    const QString words = reopen();
    if (isRoot) {
        ASSERT_EQ(0, seteuid(0));
    }
    QFile::setPermissions(folder.path(),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_THAT(words.toStdString(), testing::AnyOf(HasSubstr("read-only"), HasSubstr("writable")));
}

void overwrite(const QString& path, qint64 from, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(from));
    ASSERT_EQ(bytes.size(), file.write(bytes));
}

TEST_F(SpoolQueue, ADamagedFileIsMovedAsideAndToldOf)
{
    ASSERT_EQ(QString(), reopen());
    spool->append(numberedFrom(1, 5000));
    spool.reset();
    overwrite(path(), 4096, QByteArray(8192, 'x'));
    ASSERT_EQ(QString(), reopen());
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("it was moved to"));
    EXPECT_EQ(1, QDir(folder.path()).entryList({QStringLiteral("*.damaged-*")}).size());
    spool->append(numberedFrom(7, 1));
    EXPECT_THAT(valuesOf(spool->take(9)), ElementsAre(7));
}

TEST_F(SpoolQueue, AFileOfSomethingElseIsMovedAsideToo)
{
    overwrite(path(), 0, QByteArray(5000, 'x'));
    ASSERT_EQ(QString(), reopen());
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("it was moved to"));
}

TEST_F(SpoolQueue, MemoryStaysBoundedAndNothingIsLostWhileTheDiskKeepsUp)
{
    SpoolLimits limits;
    limits.memoryBytes = 20 * int(sizeof(Sample));
    ASSERT_EQ(QString(), reopen(limits));
    for (int round = 0; round < 100; ++round) {
        spool->append(numberedFrom(round * 10, 10));
        ASSERT_TRUE(spool->flush());
    }
    const std::vector<TakenSample> taken = spool->take(2000);
    ASSERT_EQ(1000U, taken.size());
    for (int index = 0; index < 1000; ++index)
        EXPECT_EQ(index, std::get<qint64>(taken[std::size_t(index)].sample.value));
    EXPECT_EQ(0U, spool->figures().dropped);
}

/// While it lives, the system refuses to write to any file, as a full disk does.
class NoRoom
{
public:
    NoRoom() : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~NoRoom()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    NoRoom(const NoRoom&) = delete;
    NoRoom& operator=(const NoRoom&) = delete;

private:
    rlimit m_before = {};
    void (*m_handler)(int);
};

TEST_F(SpoolQueue, WhatTheDiskRefusesWaitsInMemoryUntilThereIsRoom)
{
    ASSERT_EQ(QString(), reopen());
    {
        const NoRoom noRoom;
        spool->append(numberedFrom(1, 5000));
        EXPECT_FALSE(spool->flush());
        EXPECT_NE(QString(), spool->figures().problem);
        EXPECT_THAT(everythingTold().toStdString(), HasSubstr("values wait in memory"));
        EXPECT_EQ(5000U, spool->take(9999).size());
    }
    EXPECT_TRUE(spool->flush());
    EXPECT_EQ(QString(), spool->figures().problem);
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("the spool can be written again"));
    ASSERT_EQ(QString(), reopen());
    EXPECT_EQ(5000U, spool->figures().depth);
    EXPECT_EQ(0U, spool->figures().dropped);
}

TEST_F(SpoolQueue, WhatTheDiskRefusesAndMemoryCannotHoldIsDroppedCountedAndTold)
{
    SpoolLimits limits;
    limits.memoryBytes = 100 * int(sizeof(Sample));
    ASSERT_EQ(QString(), reopen(limits));
    {
        const NoRoom noRoom;
        for (int round = 0; round < 10; ++round) {
            spool->append(numberedFrom(round * 50, 50));
            EXPECT_FALSE(spool->flush());
        }
    }
    EXPECT_TRUE(spool->flush());
    EXPECT_EQ(400U, spool->figures().dropped);
    EXPECT_EQ(100U, spool->figures().depth);
    EXPECT_EQ(400, valuesOf(spool->take(1)).at(0)) << "the oldest were dropped";
    EXPECT_THAT(everythingTold().toStdString(), HasSubstr("memory is full"));
}

// What the queue should do, in plain words: a row of numbers, and how many of them have left once.
struct Model {
    std::deque<qint64> waiting;
    std::size_t handedOut = 0; // of those that wait
};

class RandomSpool : public test::SpoolTest
{
protected:
    int upTo(int most) { return int(m_random() % unsigned(most + 1)); }

    void append()
    {
        const int count = 1 + upTo(60);
        spool->append(numberedFrom(m_next, count));
        for (int index = 0; index < count; ++index)
            m_model.waiting.push_back(m_next++);
        if (m_limits.memoryBytes < 1000 * int(sizeof(Sample)))
            spool->flush(); // so that there is room for the next ones
    }

    void take()
    {
        const auto skipped = std::size_t(upTo(int(m_taken.size())));
        const quint64 after = skipped == 0 ? 0 : m_taken[skipped - 1];
        const std::vector<TakenSample> taken = spool->take(upTo(200), after);
        m_taken.resize(skipped);
        for (std::size_t index = 0; index < taken.size(); ++index) {
            const std::size_t at = skipped + index;
            ASSERT_LT(at, m_model.waiting.size());
            ASSERT_EQ(m_model.waiting[at], std::get<qint64>(taken[index].sample.value));
            ASSERT_EQ(at < m_model.handedOut, taken[index].handedOutBefore);
            ASSERT_GT(taken[index].sequence, m_taken.empty() ? 0 : m_taken.back());
            m_taken.push_back(taken[index].sequence);
        }
        m_model.handedOut = std::max(m_model.handedOut, m_taken.size());
    }

    void acknowledge()
    {
        const auto count = std::size_t(upTo(int(m_taken.size())));
        if (count == 0)
            return;
        spool->acknowledge(m_taken[count - 1]);
        m_taken.erase(m_taken.begin(), m_taken.begin() + std::ptrdiff_t(count));
        m_model.waiting.erase(m_model.waiting.begin(), m_model.waiting.begin() + std::ptrdiff_t(count));
        m_model.handedOut -= count;
    }

    void restart()
    {
        ASSERT_EQ(QString(), reopen(m_limits));
        m_taken.clear();
    }

    void step()
    {
        switch (upTo(9)) {
        case 0:
            return restart();
        case 1:
            ASSERT_TRUE(spool->flush());
            return;
        case 2:
        case 3:
        case 4:
            return append();
        case 5:
        case 6:
            return acknowledge();
        default:
            return take();
        }
    }

    std::mt19937 m_random;
    SpoolLimits m_limits;
    Model m_model;
    qint64 m_next = 0;
    std::vector<quint64> m_taken;
};

TEST_F(RandomSpool, DoesWhatAPlainRowOfNumbersDoes)
{
    for (unsigned seed = 1; seed <= 4; ++seed) {
        m_random.seed(seed);
        m_limits.memoryBytes = (seed % 2 == 0 ? 30000 : 100) * int(sizeof(Sample));
        restart();
        for (int round = 0; round < 150 && !HasFatalFailure(); ++round) {
            step();
            ASSERT_EQ(m_model.waiting.size(), spool->figures().depth)
                << "seed " << seed << ", step " << round;
        }
    }
}

} // namespace

} // namespace plc
