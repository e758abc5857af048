// SPDX-License-Identifier: MIT
#include "simulator/faults.h"

#include "simulator/loopback_client.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <stdexcept>

namespace
{

using simulator::Bytes;
using simulator::Fault;
using simulator::FaultDraw;
using simulator::FaultKind;
using simulator::faultList;
using simulator::FaultPlan;
using simulator::FaultSettings;
using test::fromHex;
using test::toHex;

const char* const registerReply = "00 01 00 00 00 05 01 03 02 12 34";
const char* const writeReply = "00 01 00 00 00 06 01 06 00 05 12 34";

std::string spoiled(Fault fault, const std::string& reply, std::uint32_t detail = 0)
{
    const Bytes bytes = fromHex(reply);
    return toHex(simulator::spoil(bytes, {fault, detail, 0}, simulator::replyKindOf(bytes)));
}

std::vector<Fault> faultsOf(FaultPlan& plan, FaultPlan::Position& position, int count)
{
    std::vector<Fault> faults;
    for (int i = 0; i < count; ++i)
        faults.push_back(plan.draw(position).fault);
    return faults;
}

FaultSettings someOfEach(unsigned seed)
{
    FaultSettings settings;
    for (const FaultKind& kind : faultList())
        settings.*kind.probability = 0.06;
    settings.seed = seed;
    return settings;
}

TEST(FaultList, NamesEveryFaultOnce)
{
    EXPECT_EQ(faultList().size(), simulator::faultKinds - 1);
    for (std::size_t i = 0; i < faultList().size(); ++i)
        EXPECT_EQ(static_cast<std::size_t>(faultList()[i].fault), i + 1);
}

TEST(Spoil, DoublesAReply)
{
    EXPECT_EQ(spoiled(Fault::Doubled, registerReply), std::string(registerReply) + " " + registerReply);
}

TEST(Spoil, CutsAReplyToAtLeastOneByteAndNeverLeavesItWhole)
{
    const std::size_t whole = fromHex(registerReply).size();
    std::vector<std::size_t> sizes;
    for (std::uint32_t detail = 0; detail < whole; ++detail)
        sizes.push_back(fromHex(spoiled(Fault::Cut, registerReply, detail)).size());
    EXPECT_THAT(sizes, testing::ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 1));
    EXPECT_EQ(spoiled(Fault::Cut, registerReply, 6), "00 01 00 00 00 05 01");
}

TEST(Spoil, MakesAReadReplyLongerInLengthFieldByteCountAndData)
{
    EXPECT_EQ(spoiled(Fault::Longer, registerReply, 0xBEEF), "00 01 00 00 00 07 01 03 04 12 34 BE EF");
    EXPECT_EQ(spoiled(Fault::Longer, "00 01 00 00 00 04 01 01 01 05", 0xBEEF),
              "00 01 00 00 00 06 01 01 03 05 BE EF");
}

TEST(Spoil, MakesRepliesWithoutAByteCountLongerToo)
{
    EXPECT_EQ(spoiled(Fault::Longer, writeReply, 0xBEEF), "00 01 00 00 00 08 01 06 00 05 12 34 BE EF");
    EXPECT_EQ(spoiled(Fault::Longer, "00 01 00 00 00 03 01 83 02", 0xBEEF),
              "00 01 00 00 00 05 01 83 02 BE EF");
}

TEST(Spoil, PutsAnotherUnitIntoAReply)
{
    EXPECT_EQ(spoiled(Fault::WrongUnit, registerReply), "00 01 00 00 00 05 02 03 02 12 34");
    EXPECT_EQ(spoiled(Fault::WrongUnit, "00 01 00 00 00 03 FF 83 02"), "00 01 00 00 00 03 00 83 02");
}

TEST(Spoil, LeavesTheBytesOfOtherFaultsAlone)
{
    for (const Fault fault : {Fault::None, Fault::NoReply, Fault::Late, Fault::Split, Fault::Glued,
                              Fault::Exception, Fault::Close})
        EXPECT_EQ(spoiled(fault, registerReply, 5), registerReply);
}

TEST(Spoil, EchoesAnotherAddressOrAnotherValue)
{
    EXPECT_EQ(spoiled(Fault::WrongEcho, writeReply, 0), "00 01 00 00 00 06 01 06 00 04 12 34");
    EXPECT_EQ(spoiled(Fault::WrongEcho, writeReply, 1), "00 01 00 00 00 06 01 06 00 05 12 35");
}

TEST(Spoil, EchoesAnotherQuantity)
{
    EXPECT_EQ(spoiled(Fault::WrongEcho, "00 01 00 00 00 06 01 10 00 05 00 02", 1),
              "00 01 00 00 00 06 01 10 00 05 00 03");
}

TEST(Spoil, EchoesACoilTheOtherWay)
{
    EXPECT_EQ(spoiled(Fault::WrongEcho, "00 01 00 00 00 06 01 05 00 05 FF 00", 1),
              "00 01 00 00 00 06 01 05 00 05 00 00");
    EXPECT_EQ(spoiled(Fault::WrongEcho, "00 01 00 00 00 06 01 05 00 05 00 00", 1),
              "00 01 00 00 00 06 01 05 00 05 FF 00");
}

TEST(Spoil, CountsOneByteMoreOrLessThanThereAre)
{
    EXPECT_EQ(spoiled(Fault::WrongByteCount, registerReply, 0), "00 01 00 00 00 05 01 03 03 12 34");
    EXPECT_EQ(spoiled(Fault::WrongByteCount, registerReply, 1), "00 01 00 00 00 05 01 03 01 12 34");
}

TEST(Spoil, GivesAReadALengthAndAByteCountThatDoNotFitItsBytes)
{
    EXPECT_EQ(spoiled(Fault::WrongLength, registerReply, 0), "00 01 00 00 00 06 01 03 03 12 34");
    EXPECT_EQ(spoiled(Fault::WrongLength, registerReply, 1), "00 01 00 00 00 04 01 03 01 12 34");
}

TEST(Spoil, GivesAWriteALengthThatDoesNotFitItsBytes)
{
    EXPECT_EQ(spoiled(Fault::WrongLength, writeReply, 0), "00 01 00 00 00 07 01 06 00 05 12 34");
    EXPECT_EQ(spoiled(Fault::WrongLength, writeReply, 1), "00 01 00 00 00 05 01 06 00 05 12 34");
}

TEST(IsExecuted, HoldsForEveryFaultThatIsNoException)
{
    EXPECT_FALSE(simulator::isExecuted(Fault::Exception));
    EXPECT_FALSE(simulator::isExecuted(Fault::PaddedException));
    EXPECT_TRUE(simulator::isExecuted(Fault::None));
    EXPECT_TRUE(simulator::isExecuted(Fault::NoReply));
}

TEST(Padded, MakesAnExceptionAsLongAsTheReplyThatIsWaitedFor)
{
    const FaultDraw draw{Fault::PaddedException, 0x77, 0};
    EXPECT_EQ(toHex(simulator::padded(fromHex("00 01 00 00 00 03 01 83 04"), 11, draw)),
              "00 01 00 00 00 05 01 83 04 77 77");
}

TEST(Padded, LeavesAnExceptionThatIsLongEnough)
{
    EXPECT_EQ(simulator::padded(fromHex("00 01 00 00 00 03 01 83 04"), 9, {}).size(), 9u);
}

TEST(CanHit, KnowsWhatHasAnEchoAndWhatHasAByteCount)
{
    using simulator::canHit;
    using simulator::ReplyKind;
    EXPECT_TRUE(canHit(Fault::WrongEcho, ReplyKind::ToWrite));
    EXPECT_FALSE(canHit(Fault::WrongEcho, ReplyKind::ToRead));
    EXPECT_FALSE(canHit(Fault::WrongEcho, ReplyKind::Exception));
    EXPECT_TRUE(canHit(Fault::WrongByteCount, ReplyKind::ToRead));
    EXPECT_FALSE(canHit(Fault::WrongByteCount, ReplyKind::ToWrite));
    EXPECT_FALSE(canHit(Fault::WrongByteCount, ReplyKind::Exception));
    EXPECT_TRUE(canHit(Fault::WrongLength, ReplyKind::Exception));
}

TEST(FaultPlan, SpreadsDelaysOverTheirWholeRange)
{
    FaultSettings settings;
    settings.delay = 1;
    settings.delayFromMs = 3;
    settings.delayToMs = 5;
    FaultPlan plan(settings);
    FaultPlan::Position position;
    std::map<int, int> counts;
    for (int i = 0; i < 300; ++i)
        ++counts[plan.draw(position).lateMs];
    EXPECT_EQ(counts.size(), 3u);
    for (const int ms : {3, 4, 5})
        EXPECT_GT(counts[ms], 50) << ms;
}

TEST(FaultPlan, InjectsNothingUnlessTold)
{
    FaultPlan plan{FaultSettings()};
    FaultPlan::Position position;
    EXPECT_THAT(faultsOf(plan, position, 1000), testing::Each(Fault::None));
}

TEST(FaultPlan, InjectsACertainFaultAlways)
{
    for (const FaultKind& kind : faultList()) {
        FaultSettings settings;
        settings.*kind.probability = 1;
        FaultPlan plan(settings);
        FaultPlan::Position position;
        EXPECT_THAT(faultsOf(plan, position, 1000), testing::Each(kind.fault)) << kind.name;
    }
}

TEST(FaultPlan, InjectsEachFaultAboutAsOftenAsItsProbabilitySays)
{
    FaultPlan plan(someOfEach(1));
    FaultPlan::Position position;
    std::map<Fault, int> counts;
    for (const Fault fault : faultsOf(plan, position, 10000))
        ++counts[fault];
    for (const FaultKind& kind : faultList())
        EXPECT_NEAR(counts[kind.fault], 600, 120) << kind.name; // five times the usual scatter
    EXPECT_NEAR(counts[Fault::None], 400, 120);
}

TEST(FaultPlan, GivesTheSameFaultsForTheSameSeed)
{
    FaultPlan one(someOfEach(42));
    FaultPlan two(someOfEach(42));
    FaultPlan::Position first;
    FaultPlan::Position second;
    EXPECT_EQ(faultsOf(one, first, 200), faultsOf(two, second, 200));
}

TEST(FaultPlan, GivesOtherFaultsForAnotherSeed)
{
    FaultPlan one(someOfEach(1));
    FaultPlan two(someOfEach(2));
    FaultPlan::Position first;
    FaultPlan::Position second;
    EXPECT_NE(faultsOf(one, first, 200), faultsOf(two, second, 200));
}

TEST(FaultPlan, GivesAConnectionTheSameFaultsWhateverOthersDo)
{
    FaultPlan alone(someOfEach(1));
    FaultPlan::Position lonely;
    const std::vector<Fault> expected = faultsOf(alone, lonely, 50);

    FaultPlan shared(someOfEach(1));
    FaultPlan::Position own;
    FaultPlan::Position other;
    std::vector<Fault> faults;
    for (int i = 0; i < 50; ++i) {
        faults.push_back(shared.draw(own).fault);
        shared.draw(other);
    }
    EXPECT_EQ(faults, expected);
}

// Otherwise a seed whose first fault closes the connection would close every new one at its first request.
TEST(FaultPlan, GivesANewConnectionAnotherSequence)
{
    FaultPlan plan(someOfEach(1));
    FaultPlan::Position first;
    FaultPlan::Position second;
    EXPECT_NE(faultsOf(plan, first, 200), faultsOf(plan, second, 200));
}

TEST(FaultPlan, StartsItsSequencesAgainAfterARestart)
{
    FaultPlan plan(someOfEach(1));
    FaultPlan::Position old;
    const std::vector<Fault> expected = faultsOf(plan, old, 50);
    plan.restart(someOfEach(1));
    EXPECT_EQ(faultsOf(plan, old, 50), expected);
    plan.restart(someOfEach(1));
    FaultPlan::Position fresh;
    EXPECT_EQ(faultsOf(plan, fresh, 50), expected);
}

TEST(FaultPlan, HandsOutTheDelay)
{
    FaultSettings settings;
    settings.lateMs = 77;
    FaultPlan plan(settings);
    FaultPlan::Position position;
    EXPECT_EQ(plan.draw(position).lateMs, 77);
}

TEST(CheckFaults, RefusesImpossibleProbabilities)
{
    for (const double wrong : {-0.1, 1.1, std::nan("")}) {
        FaultSettings settings;
        settings.cut = wrong;
        EXPECT_THROW(checkFaults(settings), std::invalid_argument) << wrong;
    }
}

TEST(CheckFaults, RefusesASumAboveOneButForgivesRounding)
{
    FaultSettings settings;
    settings.noReply = 0.05;
    settings.late = 0.55;
    settings.doubled = 0.3;
    settings.split = 0.1; // added up in this order, they give a little more than 1
    EXPECT_NO_THROW(checkFaults(settings));
    settings.late = 0.56;
    EXPECT_THROW(checkFaults(settings), std::invalid_argument);
}

TEST(CheckFaults, RefusesANegativeDelay)
{
    FaultSettings settings;
    settings.lateMs = -1;
    EXPECT_THROW(checkFaults(settings), std::invalid_argument);
}

TEST(CheckFaults, RefusesDelaysThatAreNegativeOrOutOfOrder)
{
    FaultSettings settings;
    settings.delayFromMs = -1;
    EXPECT_THROW(checkFaults(settings), std::invalid_argument);
    settings.delayFromMs = 101;
    settings.delayToMs = 100;
    EXPECT_THROW(checkFaults(settings), std::invalid_argument);
    settings.delayFromMs = 100;
    EXPECT_NO_THROW(checkFaults(settings));
}

TEST(FaultPlan, KeepsItsSettingsWhenNewOnesAreRefused)
{
    FaultSettings settings;
    settings.late = 1;
    FaultPlan plan(settings);
    settings.cut = 1;
    EXPECT_THROW(plan.restart(settings), std::invalid_argument);
    FaultPlan::Position position;
    EXPECT_EQ(plan.draw(position).fault, Fault::Late);
}

} // namespace
