// SPDX-License-Identifier: MIT
#include "runtime/cycle/request_ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::IsEmpty;

const int stationA = 1;
const int stationB = 2;

LedgerEntry word(int key, int element, int station = stationA, int count = 1)
{
    Variable elements;
    elements.area = 9;
    elements.element = element;
    elements.count = count;
    elements.station = station;
    return {key, elements};
}

/// "key:end ..." in the order told
std::string text(const RequestLedger::Ended& ended)
{
    const char* const words[] = {"done", "failed", "purged", "discarded", "replaced", "out of step"};
    std::string result;
    for (const EndedRequest& request : ended)
        result += std::to_string(request.key) + ":" + words[static_cast<int>(request.end)] + " ";
    return result;
}

RequestLedger ledgerOf(int entries, bool multiStation = false)
{
    RequestLedger ledger(multiStation);
    for (int entry = 1; entry <= entries; ++entry)
        ledger.queued(word(entry, entry), entry);
    return ledger;
}

TEST(RequestLedger, TellsOfTheHeadThatWasAnswered)
{
    RequestLedger ledger = ledgerOf(2);
    EXPECT_EQ(text(ledger.answered(1)), "1:done ");
    EXPECT_EQ(text(ledger.answered(0)), "2:done ");
}

TEST(RequestLedger, WaitsForTheSecondFrameOfARequest)
{
    RequestLedger ledger = ledgerOf(1);
    EXPECT_EQ(text(ledger.answered(1)), "");
    EXPECT_EQ(text(ledger.answered(0)), "1:done ");
}

TEST(RequestLedger, TellsOfAReplacedRequestThatIsNotTheHead)
{
    RequestLedger ledger = ledgerOf(3);
    EXPECT_EQ(text(ledger.queued(word(4, 2), 3)), "2:replaced ");
    EXPECT_EQ(text(ledger.queued(word(5, 1), 4)), "") << "the head is never replaced";
    ledger.answered(3);
    EXPECT_EQ(text(ledger.answered(2)), "4:done ") << "the newer one has taken its place";
}

TEST(RequestLedger, KnowsThatEqualMeansStationAndCountToo)
{
    RequestLedger ledger = ledgerOf(2);
    EXPECT_EQ(text(ledger.queued(word(3, 2, stationB), 3)), "");
    EXPECT_EQ(text(ledger.queued(word(4, 2, stationA, 2), 4)), "");
    EXPECT_EQ(ledger.size(), 4);
}

TEST(RequestLedger, TellsOfRequestsDiscardedBeforeTheHead)
{
    RequestLedger ledger = ledgerOf(3);
    EXPECT_EQ(text(ledger.polled(3)), "");
    EXPECT_EQ(text(ledger.polled(1)), "1:discarded 2:discarded ");
    EXPECT_EQ(text(ledger.answered(0)), "3:done ");
}

TEST(RequestLedger, TellsOfEverythingPurgedWithOneStation)
{
    RequestLedger ledger = ledgerOf(3);
    EXPECT_EQ(text(ledger.givenUp(true, stationA, 0)), "1:failed 2:purged 3:purged ");
}

TEST(RequestLedger, KeepsTheRequestsOfOtherStations)
{
    RequestLedger ledger(true);
    ledger.queued(word(1, 1, stationA), 1);
    ledger.queued(word(2, 1, stationB), 2);
    ledger.queued(word(3, 2, stationA), 3);
    EXPECT_EQ(text(ledger.givenUp(true, stationA, 1)), "1:failed 3:purged ");
    EXPECT_EQ(text(ledger.answered(0)), "2:done ");
}

TEST(RequestLedger, PurgesWhenARequestOfAnotherListWasGivenUp)
{
    RequestLedger ledger = ledgerOf(2);
    EXPECT_EQ(text(ledger.givenUp(false, stationB, 0)), "1:purged 2:purged ");
}

TEST(RequestLedger, LosesNothingWhenTheListIsNotWhatItMustBe)
{
    RequestLedger ledger = ledgerOf(2);
    EXPECT_EQ(text(ledger.answered(7)), "1:out of step 2:out of step ");
    EXPECT_EQ(ledger.size(), 0);
}

TEST(RequestLedger, HasRoomForAsManyAsTheDriverTakes)
{
    EXPECT_TRUE(ledgerOf(1023).hasRoom());
    EXPECT_FALSE(ledgerOf(1024).hasRoom());
}

TEST(RequestLedger, SeesThatAReplacementWouldOvertakeAnOlderWrite)
{
    RequestLedger ledger = ledgerOf(2);
    EXPECT_FALSE(ledger.wouldOvertake(word(0, 2).elements));
    ledger.queued(word(3, 1, stationA, 5), 3); // covers element 2
    EXPECT_TRUE(ledger.wouldOvertake(word(0, 2).elements));
    EXPECT_FALSE(ledger.wouldOvertake(word(0, 1).elements)) << "the head is not replaced";
    EXPECT_FALSE(ledger.wouldOvertake(word(0, 9).elements)) << "nothing to replace";
}

/// The driver's write list as far as the ledger can see it, with the true end of each request.
class FakeDriver
{
public:
    explicit FakeDriver(bool multiStation) : m_multiStation(multiStation) {}

    int size() const { return static_cast<int>(m_list.size()); }

    void queue(const LedgerEntry& entry)
    {
        for (std::size_t index = 1; index < m_list.size(); ++index) {
            Variable& queued = m_list[index].elements;
            const Variable& newer = entry.elements;
            if (queued.station == newer.station && queued.element == newer.element &&
                queued.count == newer.count) {
                ends[m_list[index].key] = RequestEnd::Replaced;
                m_list[index] = entry;
                return;
            }
        }
        m_list.push_back(entry);
    }

    /// \return true when a frame of the head is handed out
    bool poll(const std::set<int>& off)
    {
        while (!m_inFlight && !m_list.empty() && off.count(m_list.front().elements.station) != 0)
            remove(0, RequestEnd::Discarded);
        m_inFlight = !m_list.empty();
        return m_inFlight;
    }

    void answer()
    {
        m_inFlight = false;
        remove(0, RequestEnd::Done);
    }

    int giveUp()
    {
        m_inFlight = false;
        const int station = m_list.front().elements.station;
        remove(0, RequestEnd::Failed);
        for (std::size_t index = 0; index < m_list.size();) {
            if (!m_multiStation || m_list[index].elements.station == station)
                remove(index, RequestEnd::Purged);
            else
                ++index;
        }
        return station;
    }

    std::map<int, RequestEnd> ends;

private:
    void remove(std::size_t index, RequestEnd end)
    {
        ends[m_list[index].key] = end;
        m_list.erase(m_list.begin() + static_cast<std::ptrdiff_t>(index));
    }

    const bool m_multiStation;
    bool m_inFlight = false;
    std::vector<LedgerEntry> m_list;
};

class LedgerAndDriver : public testing::TestWithParam<bool>
{
protected:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

    void collect(const RequestLedger::Ended& ended)
    {
        for (const EndedRequest& request : ended) {
            EXPECT_EQ(m_told.count(request.key), 0u) << "request " << request.key << " ended twice";
            m_told[request.key] = request.end;
        }
    }

    void queueOne()
    {
        const LedgerEntry entry = word(m_nextKey++, below(6), 1 + below(3), 1 + below(2));
        m_driver.queue(entry);
        collect(m_ledger.queued(entry, m_driver.size()));
    }

    void runOne()
    {
        const std::set<int> off = {1 + below(6)};
        const bool due = m_driver.poll(off);
        collect(m_ledger.polled(m_driver.size()));
        if (!due)
            return;
        if (below(5) == 0) {
            const int station = m_driver.giveUp();
            collect(m_ledger.givenUp(true, station, m_driver.size()));
        } else if (below(5) != 0) {
            m_driver.answer();
            collect(m_ledger.answered(m_driver.size()));
        }
    }

    std::mt19937 m_random{20};
    FakeDriver m_driver{GetParam()};
    RequestLedger m_ledger{GetParam()};
    std::map<int, RequestEnd> m_told;
    int m_nextKey = 1;
};

TEST_P(LedgerAndDriver, AgreeOnTheEndOfEveryRequest)
{
    for (int turn = 0; turn < 20000; ++turn) {
        if (below(2) == 0)
            queueOne();
        else
            runOne();
        ASSERT_EQ(m_ledger.size(), m_driver.size());
    }
    EXPECT_EQ(m_told, m_driver.ends);
    EXPECT_GT(m_told.size(), 5000u);
}

INSTANTIATE_TEST_SUITE_P(Modes, LedgerAndDriver, testing::Bool(), [](const auto& mode) {
    return std::string(mode.param ? "SeveralStations" : "OneStation");
});

} // namespace
