// SPDX-License-Identifier: MIT
#include "runtime/modbus/remote_words.h"

#include "support/hex.h"

#include <gtest/gtest.h>

namespace
{

using test::fromHex;

using namespace plc;

struct Row {
    const char* frame;
    const char* words;
    const char* reply;
    const char* replyWords;
};

// As docs/wire.md has them.
const Row rows[] = {
    {"16 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 86", "station 1: read 9:100x2",
     "00 00 00 00 00 07 01 09 04 12 34 00 07", "station 1: 4660 7"},
    {"18 00 01 00 01 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CE",
     "station 1: write 9:100: 4660", "00 00 00 00 00 06 01 09 00 64 00 01", "station 1: written"},
    {"17 00 01 00 01 00 08 00 00 00 23 00 01 00 00 00 00 00 00 00 00 01 46", "station 1: write 8:2.3: 1",
     "00 00 00 00 00 06 01 08 00 23 00 01", "station 1: written"},
    {"16 00 00 00 01 00 0E 00 00 00 05 00 02 00 00 00 00 00 00 00 00 2C", "station 1: read 14:205",
     "00 00 00 00 00 07 01 0E 04 56 78 12 34", "station 1: 305419896"},
    {"16 00 00 00 02 00 02 00 00 00 05 00 0A 00 00 00 00 00 00 00 00 29", "station 2: read 2:5x10",
     "00 00 00 00 00 05 02 02 02 01 02", "station 2: 1 0 0 0 0 0 0 0 0 1"},
    {"18 00 01 00 00 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CD",
     "all stations: write 9:100: 4660", "", "no reply"},
    {"17 00 01 00 01 00 0F 00 00 00 23 00 01 00 00 00 00 00 00 00 00 01 4D", "station 1: area 15", "00 00",
     "no whole reply (2 bytes)"},
};

TEST(RemoteWords, SayWhatAFrameAsksFor)
{
    for (const Row& row : rows)
        EXPECT_EQ(remoteRequestWords(fromHex(row.frame)).toStdString(), row.words);
}

TEST(RemoteWords, SayWhatAReplyTells)
{
    for (const Row& row : rows)
        EXPECT_EQ(remoteReplyWords(fromHex(row.frame), fromHex(row.reply)).toStdString(), row.replyWords);
}

TEST(RemoteWords, ShowTheBitsThatAShortReplyHas)
{
    EXPECT_EQ(
        remoteReplyWords(fromHex(rows[4].frame), fromHex("00 00 00 00 00 04 02 02 01 81")).toStdString(),
        "station 2: 1 0 0 0 0 0 0 1");
}

TEST(RemoteWords, SayThatAFrameIsNotWhole)
{
    EXPECT_EQ(remoteRequestWords(fromHex("16 00")).toStdString(), "no whole request (2 bytes)");
}

} // namespace
