// SPDX-License-Identifier: MIT
#include "runtime/cycle/exchange_counter.h"
#include "runtime/host/request_keys.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const int noReply = -1;
const int lengthCode = PLC_LOCAL_LENGTH + 3;

RW_VAR requestTo(int station, int key)
{
    RW_VAR request = {};
    request.station = station;
    request.hostKey = key;
    return request;
}

TEST(ExchangeCounter, CountsEachEndOfAnExchangeByItself)
{
    ExchangeCounter counter;
    const RW_VAR request = requestTo(2, writeKey);
    counter.exchanged(request, 700, PLC_DONE);
    counter.exchanged(request, noReply, PLC_RETRYING);
    counter.exchanged(request, noReply, PLC_RETRYING);
    counter.exchanged(request, 900, lengthCode);
    const Statistics statistics = counter.statistics();
    EXPECT_EQ(statistics.exchanges, 4);
    EXPECT_EQ(statistics.good, 1);
    EXPECT_EQ(statistics.retried, 2);
    EXPECT_EQ(statistics.failed, 1);
    EXPECT_EQ(statistics.failuresByCode.at(lengthCode), 1);
}

TEST(ExchangeCounter, TellsTheStationsApart)
{
    ExchangeCounter counter;
    counter.exchanged(requestTo(2, cyclicKey), 700, PLC_DONE);
    counter.exchanged(requestTo(3, cyclicKey), noReply, PLC_RETRYING);
    const Statistics statistics = counter.statistics();
    ASSERT_EQ(statistics.stations.size(), 2u);
    EXPECT_EQ(statistics.stations.at(2).roundTrips.count(), 1);
    EXPECT_EQ(statistics.stations.at(2).retried, 0);
    EXPECT_EQ(statistics.stations.at(3).roundTrips.count(), 0);
    EXPECT_EQ(statistics.stations.at(3).retried, 1);
}

TEST(ExchangeCounter, CountsCyclicFramesAndBlocksToThePass)
{
    ExchangeCounter counter;
    counter.begin();
    RW_VAR block = requestTo(1, cyclicKey);
    block.area = 9;
    block.count = 10;
    counter.exchanged(block, noReply, PLC_RETRYING);
    counter.exchanged(block, 700, PLC_DONE);
    counter.blockEnded(block, 4);
    counter.exchanged(requestTo(1, writeKey), 700, PLC_DONE);
    counter.endPass();
    const PassCost pass = counter.statistics().lastPass;
    EXPECT_EQ(pass.frames, 2);
    EXPECT_EQ(pass.requests, 1);
    EXPECT_EQ(pass.registers, 10);
    EXPECT_EQ(pass.registersUnused, 4);
}

TEST(ExchangeCounter, KnowsAPassWithoutExchange)
{
    ExchangeCounter counter;
    counter.begin();
    counter.exchanged(requestTo(1, cyclicKey), 700, PLC_DONE);
    EXPECT_TRUE(counter.endPass());
    EXPECT_FALSE(counter.endPass());
    EXPECT_EQ(counter.statistics().passes, 2);
}

} // namespace
