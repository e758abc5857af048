// SPDX-License-Identifier: MIT
// plcpanel and servers that others made: what one writes the other has, at the same addresses.

#include "panel/peers/libmodbus_server.h"
#include "panel/peers/pymodbus_server.h"
#include "panel/plcpanel_run.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <type_traits>

namespace
{

using test::RunResult;
using testing::HasSubstr;

template <typename Server>
class PanelWith : public testing::Test
{
protected:
    void SetUp() override
    {
        const QString missing = Server::missing();
        if (!missing.isEmpty())
            GTEST_SKIP() << "not installed: " << missing.toStdString();
        server = std::make_unique<Server>();
    }

    RunResult run(const char* command, const QStringList& variables) const
    {
        return test::plcpanel(QStringList{QString::fromLatin1(command)} + variables +
                              QStringList{QStringLiteral("--controller"), server->controller()});
    }

    /// \return what a read of one variable prints behind its address
    std::string readOf(const char* variable) const
    {
        const RunResult ended = run("read", {QString::fromLatin1(variable), QStringLiteral("--json")});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        return ended.out;
    }

    void write(const char* variable) const
    {
        const RunResult ended = run("write", {QString::fromLatin1(variable)});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_THAT(ended.out, HasSubstr("confirmed"));
    }

    std::unique_ptr<Server> server;
};

struct ServerNames {
    template <typename Server>
    // GoogleTest looks for this name. NOLINTNEXTLINE(readability-identifier-naming)
    static std::string GetName(int /*index*/)
    {
        return std::is_same<Server, test::LibmodbusServer>::value ? "Libmodbus" : "Pymodbus";
    }
};

using Servers = testing::Types<test::LibmodbusServer, test::PymodbusServer>;
TYPED_TEST_SUITE(PanelWith, Servers, ServerNames);

} // namespace

TYPED_TEST(PanelWith, ReadsItsCoils)
{
    this->server->setCoil(100, 1);
    this->server->setCoil(103, 1);
    EXPECT_THAT(this->readOf("2:100x5"), HasSubstr("[1,0,0,1,0]"));
}

TYPED_TEST(PanelWith, ReadsItsRegisters)
{
    this->server->setWord(100, 1234);
    this->server->setWord(101, 65535);
    EXPECT_THAT(this->readOf("9:100x3"), HasSubstr("[1234,65535,0]"));
}

TYPED_TEST(PanelWith, ReadsItsDoubleWordsLowWordFirst)
{
    this->server->setWord(63232, 0x5678);
    this->server->setWord(63233, 0x1234);
    this->server->setWord(63235, 1);
    EXPECT_THAT(this->readOf("14:200x2"), HasSubstr("[305419896,65536]"));
}

TYPED_TEST(PanelWith, ReadsBitsInItsRegisters)
{
    this->server->setWord(10, 0x0009);
    EXPECT_THAT(this->readOf("8:10.0x5"), HasSubstr("[1,0,0,1,0]"));
}

TYPED_TEST(PanelWith, ReadsMoreThanARequestHolds)
{
    for (int word = 0; word < 300; ++word)
        this->server->setWord(word, 1000 + word);
    std::string all = "[1000";
    for (int word = 1; word < 300; ++word)
        all += "," + std::to_string(1000 + word);
    EXPECT_THAT(this->readOf("9:00x300"), HasSubstr(all + "]"));
}

TYPED_TEST(PanelWith, WritesItsCoils)
{
    this->server->setCoil(101, 1);
    this->write("2:100=1,0,1");
    EXPECT_EQ(this->server->coil(99), 0);
    EXPECT_EQ(this->server->coil(100), 1);
    EXPECT_EQ(this->server->coil(101), 0);
    EXPECT_EQ(this->server->coil(102), 1);
    EXPECT_EQ(this->server->coil(103), 0);
}

TYPED_TEST(PanelWith, WritesItsRegisters)
{
    this->server->setWord(102, 42);
    this->write("9:100=1234,65535");
    EXPECT_EQ(this->server->word(99), 0);
    EXPECT_EQ(this->server->word(100), 1234);
    EXPECT_EQ(this->server->word(101), 65535);
    EXPECT_EQ(this->server->word(102), 42);
}

TYPED_TEST(PanelWith, WritesItsDoubleWordsLowWordFirst)
{
    this->write("14:200=0x12345678,65536");
    EXPECT_EQ(this->server->word(63232), 0x5678);
    EXPECT_EQ(this->server->word(63233), 0x1234);
    EXPECT_EQ(this->server->word(63234), 0);
    EXPECT_EQ(this->server->word(63235), 1);
    EXPECT_EQ(this->server->word(63236), 0);
}

TYPED_TEST(PanelWith, WritesABitAndLeavesTheOthersOfItsRegister)
{
    this->server->setWord(10, 0x8001);
    this->write("8:10.3=1");
    EXPECT_EQ(this->server->word(10), 0x8009);
    this->write("8:10.0=0");
    EXPECT_EQ(this->server->word(10), 0x8008);
}

TYPED_TEST(PanelWith, IsToldWhoTheyAre)
{
    const RunResult ended = this->run("scan", {QStringLiteral("--stations"), QStringLiteral("1")});
    EXPECT_EQ(ended.status, 0) << ended.errors;
    const bool isLibmodbus = std::is_same<TypeParam, test::LibmodbusServer>::value;
    EXPECT_THAT(ended.out, HasSubstr(isLibmodbus ? "LMB" : "pymodbus, "));
    EXPECT_THAT(ended.out, HasSubstr(isLibmodbus ? " (function 17)\n" : "7.8 (function 43)\n"));
}
