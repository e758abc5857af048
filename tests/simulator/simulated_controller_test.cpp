// SPDX-License-Identifier: MIT
#include "simulator/simulated_controller.h"

#include "simulator/loopback_client.h"

#include <gmock/gmock.h>
#include <modbus.h>

#include <cerrno>
#include <chrono>
#include <dirent.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace
{

using simulator::Bytes;
using simulator::Settings;
using simulator::SimulatedController;
using test::eventually;
using test::LoopbackClient;
using testing::HasSubstr;

const char* const readRequest = "00 01 00 00 00 06 01 03 00 05 00 01";
const char* const readReply = "00 01 00 00 00 05 01 03 02 00 00";
const char* const writeRequest = "00 02 00 00 00 06 01 06 00 05 12 34"; // its reply is the same
const char* const broadcast = "00 03 00 00 00 06 00 06 00 05 43 21";

class SimulatedControllerTest : public testing::Test
{
protected:
    void SetUp() override { controller.start(); }

    SimulatedController controller;
};

/// A client of libmodbus.
class ModbusClient
{
public:
    ModbusClient(int port, int unit) : context(modbus_new_tcp("127.0.0.1", port))
    {
        modbus_set_slave(context, unit);
        modbus_set_response_timeout(context, 20, 0);
        if (modbus_connect(context) != 0)
            ADD_FAILURE() << modbus_strerror(errno);
    }
    ~ModbusClient()
    {
        modbus_close(context);
        modbus_free(context);
    }
    ModbusClient(const ModbusClient&) = delete;
    ModbusClient& operator=(const ModbusClient&) = delete;

    modbus_t* const context;
};

// Not a limit for anything: a pause taken for the end only makes the test that calls this less strict.
void waitWhileItGrows(const std::function<unsigned long()>& number)
{
    for (unsigned long before = 0, now = number(); now > before || now == 0; now = number()) {
        before = now;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

std::size_t openDescriptors()
{
    std::size_t count = 0;
    DIR* const directory = opendir("/proc/self/fd");
    while (readdir(directory))
        ++count;
    closedir(directory);
    return count;
}

TEST_F(SimulatedControllerTest, GivesALibmodbusClientTheRegistersItWrote)
{
    const ModbusClient client(controller.port(), 1);
    const std::uint16_t written[] = {1, 0xFFFF, 0x1234};
    EXPECT_EQ(modbus_write_registers(client.context, 0x2400, 3, written), 3);
    EXPECT_EQ(modbus_write_register(client.context, 0x2403, 77), 1);
    std::uint16_t read[4] = {};
    EXPECT_EQ(modbus_read_registers(client.context, 0x2400, 4, read), 4);
    EXPECT_THAT(read, testing::ElementsAre(1, 0xFFFF, 0x1234, 77));
    EXPECT_EQ(controller.memory().holdingRegister(1, 0x2403), 77);
}

TEST_F(SimulatedControllerTest, GivesALibmodbusClientTheCoilsItWrote)
{
    const ModbusClient client(controller.port(), 200);
    EXPECT_EQ(modbus_write_bit(client.context, 65535, 1), 1);
    std::uint8_t read[2] = {};
    EXPECT_EQ(modbus_read_bits(client.context, 65534, 2, read), 2);
    EXPECT_THAT(read, testing::ElementsAre(0, 1));
    EXPECT_TRUE(controller.memory().coil(200, 65535));
}

TEST_F(SimulatedControllerTest, GivesALibmodbusClientTheLargestReads)
{
    const ModbusClient client(controller.port(), 1);
    controller.memory().setCoil(1, 1999, true);
    controller.memory().setHoldingRegister(1, 124, 9);
    std::uint8_t coils[2000] = {};
    EXPECT_EQ(modbus_read_bits(client.context, 0, 2000, coils), 2000);
    EXPECT_EQ(coils[1999], 1);
    std::uint16_t registers[125] = {};
    EXPECT_EQ(modbus_read_registers(client.context, 0, 125, registers), 125);
    EXPECT_EQ(registers[124], 9);
}

TEST_F(SimulatedControllerTest, LetsALibmodbusClientReadInputs)
{
    const ModbusClient client(controller.port(), 1);
    controller.memory().setHoldingRegister(1, 100, 0x1234);
    controller.memory().setCoil(1, 101, true);
    std::uint16_t registers[1] = {};
    std::uint8_t bits[2] = {};
    EXPECT_EQ(modbus_read_input_registers(client.context, 100, 1, registers), 1);
    EXPECT_EQ(registers[0], 0x1234);
    EXPECT_EQ(modbus_read_input_bits(client.context, 100, 2, bits), 2);
    EXPECT_EQ(bits[0], 0);
    EXPECT_EQ(bits[1], 1);
}

TEST_F(SimulatedControllerTest, GivesALibmodbusClientTheExceptionItExpects)
{
    const ModbusClient client(controller.port(), 1);
    std::uint16_t values[2] = {};
    EXPECT_EQ(modbus_read_registers(client.context, 65535, 2, values), -1);
    EXPECT_EQ(errno, EMBXILADD);
    EXPECT_EQ(modbus_mask_write_register(client.context, 0, 1, 1), -1);
    EXPECT_EQ(errno, EMBXILFUN);
    EXPECT_EQ(modbus_read_registers(client.context, 0, 2, values), 2);
}

/// Descriptors of this process that are connected sockets of `port`, as a process that was forked has them.
std::vector<simulator::FileDescriptor> copiesOfSockets(int port)
{
    std::vector<simulator::FileDescriptor> copies;
    for (int number = 0; number < 1024; ++number) {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        const bool isSocket = getsockname(number, reinterpret_cast<sockaddr*>(&address), &size) == 0;
        if (isSocket && address.sin_family == AF_INET && ntohs(address.sin_port) == port)
            copies.emplace_back(dup(number));
    }
    return copies;
}

// Otherwise its events would go on to come.
TEST_F(SimulatedControllerTest, ForgetsAConnectionWhoseSocketAnotherProcessStillHasOpen)
{
    std::vector<simulator::FileDescriptor> copies;
    {
        LoopbackClient client(controller.port());
        EXPECT_EQ(client.exchange(readRequest), readReply);
        copies = copiesOfSockets(controller.port());
        ASSERT_GE(copies.size(), 2u); // the listener and the connection
    }
    for (int i = 0; i < 20; ++i) {
        LoopbackClient client(controller.port());
        EXPECT_EQ(client.exchange(readRequest), readReply);
    }
}

TEST(SimulatedController, RefusesTheAddressesOfItsSettings)
{
    Settings settings;
    settings.refused = {{10, 19}};
    SimulatedController controller(settings);
    controller.start();
    const ModbusClient client(controller.port(), 1);
    EXPECT_EQ(modbus_write_bit(client.context, 10, 1), -1);
    EXPECT_EQ(errno, EMBXILADD);
    EXPECT_EQ(modbus_write_bit(client.context, 20, 1), 1);
}

TEST_F(SimulatedControllerTest, SendsTheExceptionOfARealControllerForAnImpossibleQuantity)
{
    LoopbackClient client(controller.port());
    EXPECT_EQ(client.exchange("AB CD 00 00 00 06 07 03 00 00 00 7E"), "AB CD 00 00 00 03 07 83 03");
}

TEST_F(SimulatedControllerTest, AnswersARequestThatComesByteByByte)
{
    LoopbackClient client(controller.port());
    for (const std::uint8_t byte : test::fromHex(readRequest))
        client.send(test::toHex({byte}));
    EXPECT_EQ(client.receiveFrame(), readReply);
}

TEST_F(SimulatedControllerTest, AnswersRequestsThatComeTogetherInTheirOrder)
{
    LoopbackClient client(controller.port());
    client.send(std::string(writeRequest) + " " + readRequest);
    EXPECT_EQ(client.receiveFrame(), writeRequest);
    EXPECT_EQ(client.receiveFrame(), "00 01 00 00 00 05 01 03 02 12 34");
}

TEST_F(SimulatedControllerTest, ClosesAConnectionThatSpeaksAnotherProtocol)
{
    LoopbackClient bystander(controller.port());
    LoopbackClient client(controller.port());
    client.send("00 01 00 07 00 06");
    EXPECT_EQ(client.receiveUntilClosed(), "");
    EXPECT_EQ(bystander.exchange(readRequest), readReply);
}

TEST_F(SimulatedControllerTest, ClosesAConnectionWithAnAbsurdLength)
{
    for (const char* header : {"00 01 00 00 00 01", "00 01 00 00 00 FF", "00 01 00 00 FF FF"}) {
        LoopbackClient client(controller.port());
        client.send(header);
        EXPECT_EQ(client.receiveUntilClosed(), "") << header;
    }
    EXPECT_EQ(controller.requests(), 0u);
}

TEST_F(SimulatedControllerTest, AnswersWhatCameBeforeABrokenHeader)
{
    LoopbackClient client(controller.port());
    client.send(std::string(readRequest) + " 00 01 00 07 00 06");
    EXPECT_EQ(client.receiveUntilClosed(), readReply);
}

TEST_F(SimulatedControllerTest, AnswersAClientThatStopsSending)
{
    LoopbackClient client(controller.port());
    client.send(readRequest);
    client.stopSending();
    EXPECT_EQ(client.receiveUntilClosed(), readReply);
}

TEST_F(SimulatedControllerTest, ExecutesABroadcastWithoutAnAnswer)
{
    controller.memory().setHoldingRegister(1, 0, 1);
    controller.memory().setHoldingRegister(2, 0, 1);
    LoopbackClient client(controller.port());
    client.send(broadcast);
    EXPECT_EQ(client.exchange(readRequest), "00 01 00 00 00 05 01 03 02 43 21");
    EXPECT_EQ(controller.memory().holdingRegister(2, 5), 0x4321);
}

TEST_F(SimulatedControllerTest, LeavesASilentUnitWithoutAnswerAndUnchanged)
{
    LoopbackClient client(controller.port());
    controller.setSilent(1, true);
    client.send(writeRequest);
    const std::string other = "00 04 00 00 00 06 02 06 00 05 00 07";
    EXPECT_EQ(client.exchange(other), other);
    EXPECT_EQ(controller.memory().holdingRegister(1, 5), 0);
    controller.setSilent(1, false);
    EXPECT_EQ(client.exchange(writeRequest), writeRequest);
}

TEST_F(SimulatedControllerTest, CountsEveryWholeRequest)
{
    LoopbackClient client(controller.port());
    controller.setSilent(9, true);
    client.send("00 01 00 00 00 06 09 03 00 05 00 01");
    client.send(broadcast);
    EXPECT_EQ(client.exchange(readRequest), readReply);
    client.send("00 01 00 00");
    EXPECT_EQ(controller.requests(), 3u);
    EXPECT_EQ(controller.injected(simulator::Fault::None), 1u);
}

TEST_F(SimulatedControllerTest, ServesSeveralConnectionsAtOnce)
{
    const auto writeOwn = [this](int unit) {
        const ModbusClient client(controller.port(), unit);
        for (int address = 0; address < 100; ++address)
            ASSERT_EQ(modbus_write_bit(client.context, address, 1), 1);
    };
    std::vector<std::thread> threads;
    for (int unit = 1; unit <= 8; ++unit)
        threads.emplace_back(writeOwn, unit);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(controller.memory().values().size(), 800u);
    EXPECT_EQ(controller.requests(), 800u);
}

TEST_F(SimulatedControllerTest, LetsTheSixtyFifthConnectionWaitForItsTurn)
{
    std::vector<std::unique_ptr<LoopbackClient>> clients;
    for (int i = 0; i < 64; ++i) {
        clients.push_back(std::make_unique<LoopbackClient>(controller.port()));
        EXPECT_EQ(clients.back()->exchange(readRequest), readReply);
    }
    LoopbackClient late(controller.port());
    late.send(readRequest);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(clients[63]->exchange(readRequest), readReply);
    EXPECT_EQ(late.bytesWaiting(), 0u);
    clients.front().reset();
    EXPECT_EQ(late.receiveFrame(), readReply);
}

// 6000 replies of 259 bytes do not fit into the buffers of the system.
TEST_F(SimulatedControllerTest, SendsEveryReplyToAClientThatReadsLate)
{
    constexpr std::size_t count = 6000;
    LoopbackClient client(controller.port());
    std::thread sender([&client] {
        Bytes request = test::fromHex("00 00 00 00 00 06 01 03 00 00 00 7D");
        for (std::size_t i = 0; i < count; ++i) {
            simulator::put16(request, 0, i);
            client.send(request);
        }
        client.stopSending();
    });
    waitWhileItGrows([this] { return controller.requests(); });
    EXPECT_LT(controller.requests(), count) << "it takes in more than it can answer";
    const Bytes replies = client.receiveBytesUntilClosed();
    sender.join();
    ASSERT_EQ(replies.size(), count * 259);
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(simulator::get16(replies, i * 259), i);
}

TEST_F(SimulatedControllerTest, TellsItsTraceEveryRequestAndReply)
{
    std::mutex mutex;
    std::vector<std::string> lines;
    Settings settings;
    settings.trace = [&](const simulator::TraceEntry& entry) {
        const std::lock_guard<std::mutex> lock(mutex);
        lines.push_back((entry.isReply ? "-> " : "<- ") + test::toHex(entry.bytes));
    };
    SimulatedController traced(settings);
    traced.start();
    LoopbackClient client(traced.port());
    client.send(broadcast);
    client.exchange(readRequest);
    traced.stop();
    EXPECT_THAT(lines, testing::ElementsAre(std::string("<- ") + broadcast, std::string("<- ") + readRequest,
                                            std::string("-> ") + readReply));
}

TEST(SimulatedControllerLife, HasNoPortBeforeItStarts)
{
    const SimulatedController controller;
    EXPECT_EQ(controller.port(), 0);
}

TEST(SimulatedControllerLife, PicksAFreePortForEach)
{
    SimulatedController one;
    SimulatedController two;
    one.start();
    two.start();
    EXPECT_GT(one.port(), 0);
    EXPECT_NE(one.port(), two.port());
}

TEST(SimulatedControllerLife, SaysWhatToDoWhenThePortIsInUse)
{
    SimulatedController first;
    first.start();
    Settings settings;
    settings.port = first.port();
    SimulatedController second(settings);
    try {
        second.start();
        FAIL() << "two controllers on one port";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("port " + std::to_string(first.port())));
        EXPECT_THAT(error.what(), HasSubstr("already in use"));
        EXPECT_THAT(error.what(), HasSubstr("choose another port"));
    }
}

TEST(SimulatedControllerLife, RefusesPortsAndFaultsThatDoNotExist)
{
    Settings settings;
    settings.port = 65536;
    EXPECT_THROW(SimulatedController{settings}, std::invalid_argument);
    settings = {};
    settings.faults.late = 2;
    EXPECT_THROW(SimulatedController{settings}, std::invalid_argument);
}

TEST_F(SimulatedControllerTest, ClosesItsConnectionsAndItsPortWhenStopped)
{
    LoopbackClient client(controller.port());
    EXPECT_EQ(client.exchange(readRequest), readReply);
    controller.stop();
    EXPECT_EQ(client.receiveUntilClosed(), "");
    EXPECT_THROW(LoopbackClient{controller.port()}, std::runtime_error);
}

TEST_F(SimulatedControllerTest, MayBeStoppedTwiceAndFromAnotherThread)
{
    LoopbackClient client(controller.port());
    std::thread other([this] { controller.stop(); });
    controller.stop();
    other.join();
    controller.stop();
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST_F(SimulatedControllerTest, ComesBackOnTheSamePortWithItsMemory)
{
    const int port = controller.port();
    LoopbackClient client(port);
    client.exchange(writeRequest);
    controller.stop();
    EXPECT_EQ(controller.port(), port);
    controller.start();
    EXPECT_EQ(controller.port(), port);
    LoopbackClient again(port);
    EXPECT_EQ(again.exchange(readRequest), "00 01 00 00 00 05 01 03 02 12 34");
}

TEST_F(SimulatedControllerTest, IgnoresASecondStart)
{
    const int port = controller.port();
    LoopbackClient client(port);
    controller.start();
    EXPECT_EQ(controller.port(), port);
    EXPECT_EQ(client.exchange(readRequest), readReply);
}

TEST(SimulatedControllerLife, LeavesNoDescriptorOpen)
{
    const std::size_t before = openDescriptors();
    {
        SimulatedController controller;
        for (int i = 0; i < 20; ++i) {
            controller.start();
            LoopbackClient client(controller.port());
            EXPECT_EQ(client.exchange(readRequest), readReply);
            controller.stop();
        }
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SimulatedControllerTest, StopsWhileClientsKeepAsking)
{
    std::atomic<bool> done{false};
    std::thread asking([&] {
        while (!done) {
            try {
                LoopbackClient client(controller.port());
                while (client.exchange(readRequest) == readReply) {
                }
            } catch (const std::runtime_error&) { // stopped: refused, or closed while sending
            }
        }
    });
    for (int i = 0; i < 10; ++i) {
        const unsigned long before = controller.requests();
        EXPECT_TRUE(eventually([&] { return controller.requests() > before; }));
        controller.stop();
        controller.start();
    }
    done = true;
    controller.stop();
    asking.join();
}

} // namespace
