// SPDX-License-Identifier: MIT
#include "runtime/modbus/frame_words.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

std::string request(const char* hex)
{
    return requestWords(QByteArray::fromHex(hex)).toStdString();
}

std::string reply(const char* frame, const char* hex)
{
    return replyWords(QByteArray::fromHex(frame), QByteArray::fromHex(hex)).toStdString();
}

TEST(HexText, SeparatesBytes)
{
    EXPECT_EQ(hexText(QByteArray::fromHex("0001fc")), QLatin1String("00 01 FC"));
}

TEST(RequestWords, SayWhatEachFunctionAsksFor)
{
    EXPECT_EQ(request("0000 0000 0006 01 01 FC05 000A"), "unit 1: read 10 coils from 64517");
    EXPECT_EQ(request("0000 0000 0006 01 03 3010 0004"), "unit 1: read 4 registers from 12304");
    EXPECT_EQ(request("0000 0000 0006 02 05 0064 FF00"), "unit 2: switch coil 100 on");
    EXPECT_EQ(request("0000 0000 0006 02 05 0064 0000"), "unit 2: switch coil 100 off");
    EXPECT_EQ(request("0000 0000 0006 01 06 0005 1234"), "unit 1: write register 5: 4660");
    EXPECT_EQ(request("0000 0000 000B 00 10 2400 0002 04 0001 0002"),
              "all units: write 2 registers from 9216: 1 2");
}

TEST(RequestWords, SayWhenItIsNone)
{
    EXPECT_EQ(request(""), "no whole request (0 bytes)");
    EXPECT_EQ(request("0000 0000 0006 01"), "no whole request (7 bytes)");
    EXPECT_EQ(request("0000 0000 0006 01 2C 0005 1234"), "unit 1: function 44");
}

TEST(ReplyWords, SayWhatCameBack)
{
    EXPECT_EQ(reply("0000 0000 0006 01 01 0000 000A", "0000 0000 0005 01 01 02 0502"),
              "unit 1: coils 1010000001");
    EXPECT_EQ(reply("0000 0000 0006 01 01 0000 0012", "0000 0000 0006 01 01 03 050102"),
              "unit 1: coils 101000001000000001");
    EXPECT_EQ(reply("0000 0000 0006 01 03 0000 0002", "0000 0000 0007 01 03 04 1234 0007"),
              "unit 1: registers 4660 7");
    EXPECT_EQ(reply("0000 0000 0006 01 06 0005 1234", "0000 0000 0006 01 06 0005 1234"), "unit 1: written");
    EXPECT_EQ(reply("0000 0000 0006 01 03 0000 0002", "0000 0000 0003 01 83 02"),
              "unit 1: refused, exception 2: illegal data address");
}

TEST(ReplyWords, SayWhenThereIsNone)
{
    EXPECT_EQ(reply("0000 0000 0006 01 03 0000 0002", ""), "no reply");
    EXPECT_EQ(reply("0000 0000 0006 01 03 0000 0002", "0000 0000 0002 01 03"), "no whole reply (8 bytes)");
}

TEST(ReplyWords, ShowTheCoilsThatAShortReplyHas)
{
    EXPECT_EQ(reply("0000 0000 0006 01 01 0000 000A", "0000 0000 0004 01 01 01 FF"),
              "unit 1: coils 11111111");
}

} // namespace
