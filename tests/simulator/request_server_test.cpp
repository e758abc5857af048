// SPDX-License-Identifier: MIT
#include "simulator/request_server.h"

#include "simulator/loopback_client.h"

#include <gmock/gmock.h>

namespace
{

using simulator::Bytes;
using simulator::ControllerMemory;
using simulator::RequestServer;
using test::fromHex;
using test::toHex;
using testing::IsEmpty;

class RequestServerTest : public testing::Test
{
protected:
    std::string answer(const std::string& request) { return toHex(server.answer(fromHex(request))); }

    ControllerMemory memory;
    RequestServer server{memory, {{100, 199}, {0x8000, 0x8000}}};
};

TEST_F(RequestServerTest, ReadsCoilsPackedFromTheLowestBit)
{
    memory.setCoil(1, 0x10, true);
    memory.setCoil(1, 0x19, true);
    EXPECT_EQ(answer("12 34 00 00 00 06 01 01 00 10 00 0A"), "12 34 00 00 00 05 01 01 02 01 02");
}

TEST_F(RequestServerTest, ReadsHoldingRegistersHighByteFirst)
{
    memory.setHoldingRegister(2, 0xF700, 0x1234);
    memory.setHoldingRegister(2, 0xF701, 0xABCD);
    EXPECT_EQ(answer("00 07 00 00 00 06 02 03 F7 00 00 02"), "00 07 00 00 00 07 02 03 04 12 34 AB CD");
}

TEST_F(RequestServerTest, ReadsCoilsAsDiscreteInputs)
{
    memory.setCoil(1, 0x10, true);
    memory.setCoil(1, 0x19, true);
    EXPECT_EQ(answer("12 34 00 00 00 06 01 02 00 10 00 0A"), "12 34 00 00 00 05 01 02 02 01 02");
}

TEST_F(RequestServerTest, ReadsHoldingRegistersAsInputRegisters)
{
    memory.setHoldingRegister(2, 0xF700, 0x1234);
    EXPECT_EQ(answer("00 07 00 00 00 06 02 04 F7 00 00 01"), "00 07 00 00 00 05 02 04 02 12 34");
}

TEST_F(RequestServerTest, WritesASingleCoil)
{
    const std::string on = "00 01 00 00 00 06 01 05 FC 05 FF 00";
    EXPECT_EQ(answer(on), on);
    EXPECT_TRUE(memory.coil(1, 0xFC05));
    const std::string off = "00 02 00 00 00 06 01 05 FC 05 00 00";
    EXPECT_EQ(answer(off), off);
    EXPECT_FALSE(memory.coil(1, 0xFC05));
}

TEST_F(RequestServerTest, WritesASingleRegister)
{
    const std::string request = "00 01 00 00 00 06 01 06 FF FF 12 34";
    EXPECT_EQ(answer(request), request);
    EXPECT_EQ(memory.holdingRegister(1, 65535), 0x1234);
}

TEST_F(RequestServerTest, WritesSeveralCoils)
{
    EXPECT_EQ(answer("00 01 00 00 00 09 01 0F 00 03 00 0A 02 01 02"), "00 01 00 00 00 06 01 0F 00 03 00 0A");
    EXPECT_TRUE(memory.coil(1, 3));
    EXPECT_FALSE(memory.coil(1, 4));
    EXPECT_TRUE(memory.coil(1, 12));
}

TEST_F(RequestServerTest, WritesSeveralRegisters)
{
    EXPECT_EQ(answer("00 01 00 00 00 0B 01 10 00 03 00 02 04 00 01 FF FE"),
              "00 01 00 00 00 06 01 10 00 03 00 02");
    EXPECT_EQ(memory.holdingRegister(1, 3), 1);
    EXPECT_EQ(memory.holdingRegister(1, 4), 0xFFFE);
    EXPECT_EQ(memory.values().size(), 2u);
}

TEST_F(RequestServerTest, GivesEachUnitItsOwnMemory)
{
    answer("00 01 00 00 00 06 01 06 00 05 00 11");
    answer("00 02 00 00 00 06 FF 06 00 05 00 22");
    EXPECT_EQ(answer("00 03 00 00 00 06 01 03 00 05 00 01"), "00 03 00 00 00 05 01 03 02 00 11");
    EXPECT_EQ(answer("00 04 00 00 00 06 FF 03 00 05 00 01"), "00 04 00 00 00 05 FF 03 02 00 22");
}

struct Quantity {
    const char* request;
    std::size_t replySize;
};

class LargestQuantity : public RequestServerTest, public testing::WithParamInterface<Quantity>
{
};

TEST_P(LargestQuantity, IsServed)
{
    EXPECT_EQ(server.answer(fromHex(GetParam().request)).size(), GetParam().replySize);
}

INSTANTIATE_TEST_SUITE_P(RequestServer, LargestQuantity,
                         testing::Values(Quantity{"00 01 00 00 00 06 01 01 10 00 07 D0", 9 + 250},
                                         Quantity{"00 01 00 00 00 06 01 03 10 00 00 7D", 9 + 250}));

TEST_F(RequestServerTest, WritesAsManyRegistersAsModbusAllows)
{
    Bytes request = fromHex("00 01 00 00 00 FD 01 10 10 00 00 7B F6");
    request.resize(request.size() + 246, 0x11);
    EXPECT_EQ(toHex(server.answer(request)), "00 01 00 00 00 06 01 10 10 00 00 7B");
    EXPECT_EQ(memory.values().size(), 123u);
}

struct Refusal {
    const char* name;
    const char* request;
    const char* reply;
};

void PrintTo(const Refusal& refusal, std::ostream* stream)
{
    *stream << refusal.name;
}

class RefusedRequest : public RequestServerTest, public testing::WithParamInterface<Refusal>
{
};

TEST_P(RefusedRequest, GetsTheExceptionAndChangesNothing)
{
    EXPECT_EQ(answer(GetParam().request), GetParam().reply);
    EXPECT_THAT(memory.values(), IsEmpty());
}

const Refusal refusals[] = {
    {"UnknownFunction", "AB CD 00 00 00 03 07 63 00", "AB CD 00 00 00 03 07 E3 01"},
    {"FunctionCodeZero", "00 01 00 00 00 02 01 00", "00 01 00 00 00 03 01 80 01"},
    {"FunctionCodeOfAnException", "00 01 00 00 00 02 01 83", "00 01 00 00 00 03 01 83 01"},
    {"NoDiscreteInputs", "00 01 00 00 00 06 01 02 00 00 00 00", "00 01 00 00 00 03 01 82 03"},
    {"InputRegisters126", "00 01 00 00 00 06 01 04 00 00 00 7E", "00 01 00 00 00 03 01 84 03"},
    {"InputsInAHole", "00 01 00 00 00 06 01 04 00 64 00 01", "00 01 00 00 00 03 01 84 02"},
    {"NoCoils", "AB CD 00 00 00 06 09 01 00 00 00 00", "AB CD 00 00 00 03 09 81 03"},
    {"Coils2001", "00 01 00 00 00 06 01 01 00 00 07 D1", "00 01 00 00 00 03 01 81 03"},
    {"NoRegisters", "00 01 00 00 00 06 01 03 00 00 00 00", "00 01 00 00 00 03 01 83 03"},
    {"Registers126", "00 01 00 00 00 06 01 03 00 00 00 7E", "00 01 00 00 00 03 01 83 03"},
    {"Registers65535", "00 01 00 00 00 06 01 03 00 00 FF FF", "00 01 00 00 00 03 01 83 03"},
    {"ReadWithoutQuantity", "00 01 00 00 00 04 01 03 00 00", "00 01 00 00 00 03 01 83 03"},
    {"ReadWithoutAddress", "00 01 00 00 00 02 01 03", "00 01 00 00 00 03 01 83 03"},
    {"ReadWithMoreBytes", "00 01 00 00 00 07 01 03 00 00 00 01 00", "00 01 00 00 00 03 01 83 03"},
    {"CoilNeitherOnNorOff", "00 01 00 00 00 06 01 05 00 00 FF 01", "00 01 00 00 00 03 01 85 03"},
    {"WriteRegisterCutShort", "00 01 00 00 00 05 01 06 00 00 12", "00 01 00 00 00 03 01 86 03"},
    {"WriteNoRegisters", "00 01 00 00 00 07 01 10 00 00 00 00 00", "00 01 00 00 00 03 01 90 03"},
    {"WriteWithoutByteCount", "00 01 00 00 00 06 01 10 00 00 00 01", "00 01 00 00 00 03 01 90 03"},
    {"WriteWithSmallByteCount", "00 01 00 00 00 09 01 10 00 00 00 01 01 12 34", "00 01 00 00 00 03 01 90 03"},
    {"WriteWithLargeByteCount", "00 01 00 00 00 09 01 10 00 00 00 01 04 12 34", "00 01 00 00 00 03 01 90 03"},
    {"WriteWithFewerValues", "00 01 00 00 00 09 01 10 00 00 00 02 04 12 34", "00 01 00 00 00 03 01 90 03"},
    {"WriteWithMoreValues", "00 01 00 00 00 0B 01 10 00 00 00 01 02 12 34 56 78",
     "00 01 00 00 00 03 01 90 03"},
    {"WriteRegisters124", "00 01 00 00 00 09 01 10 00 00 00 7C F8 12 34", "00 01 00 00 00 03 01 90 03"},
    {"WriteCoilsWrongByteCount", "00 01 00 00 00 09 01 0F 00 00 00 08 02 FF FF",
     "00 01 00 00 00 03 01 8F 03"},
    {"WriteCoilsLargeByteCount", "00 01 00 00 00 08 01 0F 00 00 00 08 02 FF", "00 01 00 00 00 03 01 8F 03"},
    {"ReadPastTheEnd", "00 01 00 00 00 06 01 03 FF FF 00 02", "00 01 00 00 00 03 01 83 02"},
    {"CoilsPastTheEnd", "00 01 00 00 00 06 01 01 FF F0 00 11", "00 01 00 00 00 03 01 81 02"},
    {"WritePastTheEnd", "00 01 00 00 00 0B 01 10 FF FF 00 02 04 00 01 00 02", "00 01 00 00 00 03 01 90 02"},
    {"ReadOfARefusedAddress", "00 01 00 00 00 06 01 03 00 64 00 01", "00 01 00 00 00 03 01 83 02"},
    {"ReadThatReachesARefusedAddress", "00 01 00 00 00 06 01 03 00 60 00 05", "00 01 00 00 00 03 01 83 02"},
    {"ReadThatStartsInARefusedRange", "00 01 00 00 00 06 01 01 00 C7 00 05", "00 01 00 00 00 03 01 81 02"},
    {"ReadAcrossARefusedAddress", "00 01 00 00 00 06 01 03 7F FF 00 03", "00 01 00 00 00 03 01 83 02"},
    {"WriteOfARefusedCoil", "00 01 00 00 00 06 01 05 00 C7 FF 00", "00 01 00 00 00 03 01 85 02"},
    {"WriteOfARefusedRegister", "00 01 00 00 00 06 01 06 80 00 00 01", "00 01 00 00 00 03 01 86 02"},
    {"WriteThatReachesARefusedAddress", "00 01 00 00 00 0B 01 10 00 63 00 02 04 00 01 00 02",
     "00 01 00 00 00 03 01 90 02"},
    {"NoQuantityIsJudgedBeforeTheAddress", "00 01 00 00 00 06 01 03 00 96 00 00",
     "00 01 00 00 00 03 01 83 03"},
    {"CoilValueIsJudgedBeforeTheAddress", "00 01 00 00 00 06 01 05 00 96 12 34",
     "00 01 00 00 00 03 01 85 03"},
    {"QuantityIsJudgedBeforeTheAddress", "00 01 00 00 00 06 01 03 FF FF 00 7E", "00 01 00 00 00 03 01 83 03"},
};

INSTANTIATE_TEST_SUITE_P(RequestServer, RefusedRequest, testing::ValuesIn(refusals),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(RequestServerTest, ServesUpToTheEdgesOfARefusedRange)
{
    EXPECT_EQ(answer("00 01 00 00 00 06 01 03 00 63 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
    EXPECT_EQ(answer("00 01 00 00 00 06 01 03 00 C8 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
    EXPECT_EQ(answer("00 01 00 00 00 06 01 03 FF FF 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
}

class Holes : public testing::Test
{
protected:
    std::string exceptionOf(const std::string& request)
    {
        const Bytes reply = server.answer(fromHex(request));
        return reply[simulator::functionOffset] >= 0x80 ? "exception " + std::to_string(reply[8]) : "served";
    }

    ControllerMemory memory;
    RequestServer server{memory,
                         {{10, 19, 3},
                          {30, 39, {}, simulator::MemoryValue::Coil},
                          {50, 59, 4, simulator::MemoryValue::Register}}};
};

TEST_F(Holes, OfOneUnitAreThereInOthers)
{
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 03 03 00 0A 00 01"), "exception 2");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 03 01 00 0A 00 01"), "exception 2");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 04 03 00 0A 00 01"), "served");
}

TEST_F(Holes, AmongCoilsAreNoneAmongRegisters)
{
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 01 01 00 1E 00 01"), "exception 2");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 01 02 00 1E 00 01"), "exception 2");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 01 03 00 1E 00 01"), "served");
}

TEST_F(Holes, AmongRegistersOfOneUnitAreNowhereElse)
{
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 04 06 00 32 00 01"), "exception 2");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 04 05 00 32 FF 00"), "served");
    EXPECT_EQ(exceptionOf("00 01 00 00 00 06 05 06 00 32 00 01"), "served");
}

TEST_F(Holes, OfOneUnitKeepABroadcastFromItAlone)
{
    memory.setCoil(3, 0, true);
    memory.setCoil(4, 0, true);
    server.answer(fromHex("00 01 00 00 00 06 00 06 00 0A 12 34"));
    EXPECT_EQ(memory.holdingRegister(3, 10), 0);
    EXPECT_EQ(memory.holdingRegister(4, 10), 0x1234);
}

TEST_F(RequestServerTest, ReadsAMovingValueAsItIsNow)
{
    std::int64_t now = 0;
    ControllerMemory moving(1, [&now] { return now; });
    RequestServer reader(moving);
    moving.move({1, 100, {simulator::MovingValue::Counter, simulator::MovingValue::Word, 0, 9, 10}});
    const Bytes request = fromHex("00 01 00 00 00 06 01 03 00 63 00 03");
    EXPECT_EQ(toHex(reader.answer(request)), "00 01 00 00 00 09 01 03 06 00 00 00 00 00 00");
    now = 70;
    EXPECT_EQ(toHex(reader.answer(request)), "00 01 00 00 00 09 01 03 06 00 00 00 07 00 00");
}

TEST_F(RequestServerTest, EndsAMovementByAWrite)
{
    std::int64_t now = 0;
    ControllerMemory moving(1, [&now] { return now; });
    RequestServer writer(moving);
    moving.move({1, 100, {simulator::MovingValue::Counter, simulator::MovingValue::Word, 0, 9, 10}});
    writer.answer(fromHex("00 01 00 00 00 06 01 06 00 64 12 34"));
    now = 70;
    EXPECT_EQ(moving.holdingRegister(1, 100), 0x1234);
}

TEST_F(RequestServerTest, ExecutesABroadcastWriteOnEveryUnitThatExistsAndAnswersNothing)
{
    memory.setCoil(1, 0, true);
    memory.setCoil(9, 0, true);
    EXPECT_EQ(answer("00 01 00 00 00 06 00 06 00 05 12 34"), "");
    EXPECT_EQ(memory.holdingRegister(1, 5), 0x1234);
    EXPECT_EQ(memory.holdingRegister(9, 5), 0x1234);
    EXPECT_THAT(memory.units(), testing::ElementsAre(1, 9));
}

TEST_F(RequestServerTest, IgnoresABroadcastThatIsNoWriteOrWrong)
{
    memory.setCoil(1, 0, false);
    EXPECT_EQ(answer("00 01 00 00 00 06 00 03 00 05 00 01"), "");
    EXPECT_EQ(answer("00 01 00 00 00 02 00 63"), "");
    EXPECT_EQ(answer("00 01 00 00 00 06 00 06 00 64 12 34"), "");
    EXPECT_THAT(memory.values(), IsEmpty());
}

TEST_F(RequestServerTest, LeavesASilentUnitAloneUntilItIsOnAgain)
{
    const std::string write = "00 01 00 00 00 06 03 06 00 05 12 34";
    server.setSilent(3, true);
    EXPECT_FALSE(server.answers(3));
    EXPECT_EQ(answer(write), "");
    EXPECT_EQ(memory.holdingRegister(3, 5), 0);
    server.setSilent(3, false);
    EXPECT_EQ(answer(write), write);
    EXPECT_EQ(memory.holdingRegister(3, 5), 0x1234);
}

TEST_F(RequestServerTest, KeepsBroadcastsFromASilentUnit)
{
    memory.setCoil(3, 0, true);
    memory.setCoil(4, 0, true);
    server.setSilent(3, true);
    answer("00 01 00 00 00 06 00 06 00 05 12 34");
    EXPECT_EQ(memory.holdingRegister(3, 5), 0);
    EXPECT_EQ(memory.holdingRegister(4, 5), 0x1234);
}

TEST_F(RequestServerTest, AnswersNoBroadcastAndNoUnitThatCannotExist)
{
    server.setSilent(0, false);
    server.setSilent(-1, true);
    server.setSilent(256, true);
    EXPECT_FALSE(server.answers(0));
    EXPECT_FALSE(server.answers(256));
    EXPECT_TRUE(server.answers(255));
}

TEST_F(RequestServerTest, RefusesWithAnyExceptionWithoutExecuting)
{
    const Bytes write = fromHex("00 09 00 00 00 06 01 06 00 05 12 34");
    EXPECT_EQ(toHex(server.refuse(write, 4)), "00 09 00 00 00 03 01 86 04");
    EXPECT_EQ(memory.holdingRegister(1, 5), 0);
    EXPECT_EQ(toHex(server.refuse(fromHex("00 09 00 00 00 06 00 06 00 05 12 34"), 4)), "");
}

class NoFrame : public RequestServerTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(NoFrame, IsIgnored)
{
    EXPECT_EQ(answer(GetParam()), "");
    EXPECT_THAT(server.refuse(fromHex(GetParam()), 4), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(RequestServer, NoFrame,
                         testing::Values("", "00", "00 01 00 00 00 01 01",
                                         "00 01 00 00 00 06 01 03 00 00 00",       // shorter than its length
                                         "00 01 00 00 00 06 01 03 00 00 00 01 00", // longer
                                         "00 01 00 01 00 06 01 03 00 00 00 01"));  // another protocol

} // namespace
