// SPDX-License-Identifier: MIT
// The loaded library against the simulated controller over loopback: a plain socket stands where a runtime's
// link stands, and what the controller holds is looked at on its own side.
#ifdef PLC_WITH_SIMULATOR

#include "loaded_driver.h"

#include "simulator/simulated_controller.h"

#include "support/loopback.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

namespace
{

const int ANSWER_IN_MS = 5000; // generous: only silence on purpose ever takes that long
const int SILENCE_MS = 150;
const int HEADER = 6; // bytes up to and with the length field

/// One connection; hands out whole replies, put together by the length field.
class Link
{
public:
    explicit Link(int port) : m_socket(socket(AF_INET, SOCK_STREAM, 0))
    {
        const sockaddr_in address = test::loopback(port);
        m_connected = connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Link() { close(m_socket); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    bool connected() const { return m_connected; }

    /// \return the reply, empty when none came in time
    QByteArray exchange(const QByteArray& request, int waitMs)
    {
        if (send(m_socket, request.constData(), static_cast<size_t>(request.size()), MSG_NOSIGNAL) !=
            request.size())
            return QByteArray();
        QByteArray reply = receive(HEADER, waitMs);
        if (reply.size() == HEADER)
            reply +=
                receive(static_cast<unsigned char>(reply[4]) * 256 + static_cast<unsigned char>(reply[5]),
                        ANSWER_IN_MS);
        return reply;
    }

private:
    QByteArray receive(int size, int waitMs)
    {
        QByteArray bytes;
        pollfd readable = {m_socket, POLLIN, 0};
        while (bytes.size() < size && poll(&readable, 1, waitMs) == 1) {
            char part[300];
            const ssize_t got = recv(m_socket, part, static_cast<size_t>(size - bytes.size()), 0);
            if (got <= 0)
                break;
            bytes.append(part, static_cast<int>(got));
        }
        return bytes;
    }

    int m_socket;
    bool m_connected;
};

class Loopback : public LibraryTest
{
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        controller.start();
        link.reset(new Link(controller.port()));
        ASSERT_TRUE(link->connected());
    }

    /// One turn. \return result code, -1 when there was nothing to send
    int turn(int waitMs = ANSWER_IN_MS)
    {
        const Protocol* next = driver.ComCommunication();
        if (!next)
            return -1;
        QByteArray reply = link->exchange(next->frame, next->replyLength == 0 ? 0 : waitMs);
        return driver.DataCom(&reply, reply.size())->result;
    }

    /// Turns until there is nothing to send; each must succeed. Five writes in a row are followed by one call
    /// that finds nothing, so two such calls in a row are the end.
    void runDry()
    {
        for (int idle = 0; idle < 2;) {
            const int result = turn();
            idle = result == -1 ? idle + 1 : 0;
            ASSERT_TRUE(result == 1 || result == -1) << result;
        }
    }

    void readOnce(int area, const char* text, int count)
    {
        RW_VAR var = Variable(area, 0, count);
        var.name2 = text;
        ASSERT_LT(0, driver.AddListOnceReadVar(&var, 0));
        runDry();
    }

    unsigned held(int address, int unit = 1) { return controller.memory().holdingRegister(unit, address); }

    simulator::SimulatedController controller;
    std::unique_ptr<Link> link;
};

struct Place {
    int area;
    const char* text;
    int address; // where the controller keeps it
};

// Element 15 of each bit area, written as its address text.
const Place coils[] = {{0, "17", 0xF80F}, {1, "17", 0xFC0F}, {2, "15", 0x000F}, {3, "15", 0x240F},
                       {4, "15", 0xE00F}, {5, "15", 0xF00F}, {6, "15", 0xF40F}, {7, "8015", 0x1F4F}};

// Element 32 of each word area.
const Place words[] = {
    {9, "32", 0x0020}, {10, "32", 0x3020}, {11, "32", 0x2420}, {12, "32", 0xF020}, {13, "32", 0xF420}};

} // namespace

TEST_F(Loopback, CyclicReadsFollowTheController)
{
    controller.memory().setHoldingRegister(1, 0x3010, 0x1234);
    controller.memory().setCoil(1, 0xFC09, true);
    RW_VAR registers = Variable(10, 16, 2), bits = Variable(1, 8, 3);
    driver.AddListReadVar(&registers);
    driver.AddListReadVar(&bits);

    EXPECT_EQ(1, turn());
    EXPECT_EQ(1, turn());
    EXPECT_EQ("34 12 00 00", get(10, "16", 2));
    EXPECT_EQ("00 01 00", get(1, "10", 3));

    controller.memory().setHoldingRegister(1, 0x3011, 0x5678);
    controller.memory().setCoil(1, 0xFC09, false);
    EXPECT_EQ(1, turn());
    EXPECT_EQ(1, turn());
    EXPECT_EQ("34 12 78 56", get(10, "16", 2));
    EXPECT_EQ("00 00 00", get(1, "10", 3));
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(4u, controller.requests());
}

TEST_F(Loopback, OneShotReadsReachEveryAreaThatCanBeRead)
{
    for (const Place& place : coils) {
        SCOPED_TRACE(place.area);
        controller.memory().setCoil(1, place.address, true);
        readOnce(place.area, place.text, 1);
        EXPECT_EQ("01", get(place.area, place.text, 1));
    }
    for (const Place& place : words) {
        SCOPED_TRACE(place.area);
        controller.memory().setHoldingRegister(1, place.address, static_cast<uint16_t>(0x1200 + place.area));
        readOnce(place.area, place.text, 1);
        EXPECT_EQ(toHex(QByteArray(1, static_cast<char>(place.area))) + " 12",
                  get(place.area, place.text, 1));
    }
    // One double word is a count of two.
    controller.memory().setHoldingRegister(1, 0xF706, 0x5678);
    controller.memory().setHoldingRegister(1, 0xF707, 0x1234);
    readOnce(14, "203", 2);
    EXPECT_EQ("78 56 34 12", get(14, "203", 2));
    EXPECT_EQ(14u, reports().size());
}

TEST_F(Loopback, BitsAreWrittenInEveryAreaThatAllowsIt)
{
    for (const Place& place : coils) {
        if (place.area == 0) // never written
            continue;
        SCOPED_TRACE(place.area);
        EXPECT_EQ(1, set(place.area, place.text, fromHex("01"), 1));
        runDry();
        EXPECT_TRUE(controller.memory().coil(1, place.address));
        EXPECT_EQ(1, set(place.area, place.text, fromHex("00"), 1));
        runDry();
        EXPECT_FALSE(controller.memory().coil(1, place.address));
    }
    EXPECT_EQ(0, set(0, "17", fromHex("01"), 1));
    EXPECT_EQ("nothing", poll());
}

TEST_F(Loopback, SeveralBitsAreWrittenOneByOne)
{
    EXPECT_EQ(7, set(2, "100", fromHex("01 00 01 01 00 00 01"), 7));
    runDry();

    std::string bits;
    for (int address = 100; address < 107; ++address)
        bits += controller.memory().coil(1, address) ? '1' : '0';
    EXPECT_EQ("1011001", bits);
}

TEST_F(Loopback, WordsAreWrittenInEveryAreaThatAllowsIt)
{
    for (const Place& place : words) {
        SCOPED_TRACE(place.area);
        EXPECT_EQ(1, set(place.area, place.text, fromHex("34 12 78 56 BC 9A"), 3));
        runDry();
        EXPECT_EQ(0x1234u, held(place.address));
        EXPECT_EQ(0x5678u, held(place.address + 1));
        EXPECT_EQ(0x9ABCu, held(place.address + 2));
        EXPECT_EQ(1, set(place.area, place.text, fromHex("FF 00"), 1));
        runDry();
        EXPECT_EQ(0x00FFu, held(place.address));
    }
}

TEST_F(Loopback, LongWritesArriveInBlocks)
{
    QByteArray data;
    for (int i = 0; i < 250; ++i) {
        data.append(static_cast<char>(i));
        data.append('\x7F');
    }
    EXPECT_EQ(3, set(9, "1000", data, 250));
    runDry();

    EXPECT_EQ(3u, controller.requests());
    for (int i = 0; i < 250; ++i)
        ASSERT_EQ(0x7F00u + static_cast<unsigned>(i), held(1000 + i)) << i;
    EXPECT_EQ(0u, held(1250));
}

TEST_F(Loopback, DoubleWordsAreWrittenLowHalfFirst)
{
    EXPECT_EQ(1, set(14, "201", fromHex("78 56 34 12 01 00 00 80"), 4)); // four 16-bit words
    runDry();

    EXPECT_EQ(0x5678u, held(0xF702));
    EXPECT_EQ(0x1234u, held(0xF703));
    EXPECT_EQ(0x0001u, held(0xF704));
    EXPECT_EQ(0x8000u, held(0xF705));
}

TEST_F(Loopback, ABitInsideAWordLeavesTheOtherFifteenAsTheControllerHasThem)
{
    controller.memory().setHoldingRegister(1, 10, 0xA5F0);

    EXPECT_EQ(1, set(8, "10.3", fromHex("01"), 1));
    runDry();
    EXPECT_EQ(0xA5F8u, held(10));
    EXPECT_EQ(1, set(8, "10.15", fromHex("00"), 1));
    runDry();
    EXPECT_EQ(0x25F8u, held(10));
    EXPECT_EQ("F8 25", get(9, "10", 1));
}

TEST_F(Loopback, BitsInsideTwoWordsAreWrittenWordByWord)
{
    controller.memory().setHoldingRegister(1, 10, 0x0FFF);
    controller.memory().setHoldingRegister(1, 11, 0xFFF0);

    EXPECT_EQ(4, set(8, "10.14", fromHex("01 00 01 00"), 4));
    runDry();

    EXPECT_EQ(0x4FFFu, held(10));
    EXPECT_EQ(0xFFF1u, held(11));
}

TEST_F(Loopback, ARefusedRequestFailsWithTheLengthCode)
{
    info.maxBlockCount = 200; // more registers than a controller gives at once
    info.retryLimit = 0;
    RW_VAR var = Variable(9, 0, 126);
    var.hostKey = 3;
    driver.AddListReadVar(&var);

    EXPECT_EQ(74, turn());
}

TEST_F(Loopback, ASilentStationFailsAndTheNextOneIsServed)
{
    info.multiStation = 1;
    controller.setSilent(2, true);
    for (int station = 2; station <= 3; ++station) {
        EXPECT_EQ(station - 1, set(9, "5", fromHex("01 00"), 1, 10 + station, station));
    }

    EXPECT_EQ(0, turn(SILENCE_MS));
    EXPECT_EQ(41, turn(SILENCE_MS));
    EXPECT_EQ(1, turn());
    EXPECT_EQ(0u, held(5, 2));
    EXPECT_EQ(1u, held(5, 3));
    EXPECT_EQ("nothing", poll());
}

TEST_F(Loopback, ASwitchedOffStationIsNotAskedUntilItIsOnAgain)
{
    RW_VAR var = Variable(9, 5, 1);
    driver.AddListReadVar(&var);
    driver.EnCommStation(1, 0);
    EXPECT_EQ(-1, turn());
    EXPECT_EQ(0u, controller.requests());

    controller.memory().setHoldingRegister(1, 5, 77);
    driver.EnCommStation(1, 1);
    EXPECT_EQ(1, turn());
    EXPECT_EQ("4D 00", get(9, "5", 1));
}

TEST_F(Loopback, ABroadcastReachesEveryStationAndWaitsForNoAnswer)
{
    controller.memory().setHoldingRegister(1, 9, 1);
    controller.memory().setHoldingRegister(2, 9, 1);
    RW_VAR var = Variable(9, 7, 1, 0);
    var.data = fromHex("34 12");
    driver.AddListWriteVar(&var, 0);
    EXPECT_EQ(1, turn());
    readOnce(9, "7", 1); // answered only after the broadcast was executed

    EXPECT_EQ(0x1234u, held(7, 1));
    EXPECT_EQ(0x1234u, held(7, 2));
    EXPECT_EQ("34 12", get(9, "7", 1));
}

TEST_F(Loopback, ARebuiltReadListBringsItsVariables)
{
    QList<HOST_VAR> variables;
    for (const char* text : {"100", "102", "500"}) {
        HOST_VAR var = HOST_VAR();
        var.area = 9;
        var.address = text;
        var.count = 1;
        variables.append(var);
    }
    controller.memory().setHoldingRegister(1, 100, 1);
    controller.memory().setHoldingRegister(1, 102, 3);
    controller.memory().setHoldingRegister(1, 500, 5);
    driver.ReCreatReadVarList(&variables);

    EXPECT_EQ(1, turn());
    EXPECT_EQ(1, turn());
    EXPECT_EQ("01 00", get(9, "100", 1));
    EXPECT_EQ("03 00", get(9, "102", 1));
    EXPECT_EQ("05 00", get(9, "500", 1));
}

#endif
