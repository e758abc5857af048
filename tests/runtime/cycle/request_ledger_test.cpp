// SPDX-License-Identifier: MIT
#include "runtime/cycle/request_ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(RequestLedger, WouldOvertakeOnlyWritesBehindTheEqualOne)
{
    RequestLedger ledger(false);
    ledger.queued(word(1, 90), 1);
    ledger.queued(word(2, 1), 2);
    ledger.queued(word(3, 50), 3);
    EXPECT_FALSE(ledger.wouldOvertake(word(4, 1).elements));
    ledger.queued(word(4, 0, stationA, 2), 4);
    EXPECT_TRUE(ledger.wouldOvertake(word(5, 1).elements));
    EXPECT_FALSE(ledger.wouldOvertake(word(5, 0).elements))
        << "there is no equal one whose place it would take";
}

TEST(RequestLedger, ReplacesNothingInAListThatHasBecomeShorter)
{
    RequestLedger ledger = ledgerOf(3);
    EXPECT_EQ(text(ledger.queued(word(4, 2), 2)), "1:out of step 2:out of step 3:out of step 4:out of step ");
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

} // namespace
