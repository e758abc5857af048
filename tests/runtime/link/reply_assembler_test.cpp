// SPDX-License-Identifier: MIT
#include "runtime/link/reply_assembler.h"

#include "support/hex.h"

#include <gtest/gtest.h>

#include <QList>

namespace
{

using test::fromHex;

using plc::ReplyAssembler;

const char* const registerReply = "0001 0000 0005 01 03 02 1234";
const char* const writeReply = "0002 0000 0006 01 06 0005 1234";

TEST(ReplyAssembler, GivesAWholeReply)
{
    ReplyAssembler assembler;
    assembler.append(fromHex(registerReply));
    EXPECT_EQ(assembler.next(), fromHex(registerReply));
    EXPECT_TRUE(assembler.next().isEmpty());
    EXPECT_FALSE(assembler.partial());
}

TEST(ReplyAssembler, TellsOneWholeReplyFromEverythingElse)
{
    const QByteArray whole = fromHex(registerReply);
    const ReplyAssembler assembler;
    EXPECT_TRUE(assembler.wouldBeWhole(whole));
    EXPECT_FALSE(assembler.wouldBeWhole(QByteArray()));
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(assembler.wouldBeWhole(whole.left(size))) << size << " bytes of it";
    EXPECT_FALSE(assembler.wouldBeWhole(whole + '\0'));
    EXPECT_FALSE(assembler.wouldBeWhole(whole + fromHex(writeReply)));
}

TEST(ReplyAssembler, AHeaderThatNoReplyCanHaveIsOfNoWholeReply)
{
    const ReplyAssembler assembler;
    EXPECT_FALSE(assembler.wouldBeWhole(fromHex("0001 0001 0005 01 03 02 1234"))) << "another protocol";
    EXPECT_FALSE(assembler.wouldBeWhole(fromHex("0001 0000 0001 01")));
    EXPECT_TRUE(assembler.wouldBeWhole(fromHex("0001 0000 0002 01 03")));
    EXPECT_TRUE(assembler.wouldBeWhole(fromHex("0001 0000 00FE") + QByteArray(254, '\1')));
    EXPECT_FALSE(assembler.wouldBeWhole(fromHex("0001 0000 00FF") + QByteArray(255, '\1')));
}

TEST(ReplyAssembler, NoReplyIsWholeBehindABeginningThatWaits)
{
    ReplyAssembler assembler;
    assembler.append(fromHex("00"));
    EXPECT_FALSE(assembler.wouldBeWhole(fromHex(registerReply)));
}

TEST(ReplyAssembler, NoReplyIsWholeInAStreamThatIsOutOfStep)
{
    ReplyAssembler assembler;
    assembler.distrust();
    EXPECT_FALSE(assembler.wouldBeWhole(fromHex(registerReply)));
}

TEST(ReplyAssembler, PutsTwoRepliesTogetherWhereverTheStreamIsCut)
{
    const QByteArray stream = fromHex(registerReply) + fromHex(writeReply);
    for (int first = 0; first <= stream.size(); ++first) {
        for (int second = first; second <= stream.size(); ++second) {
            ReplyAssembler assembler;
            QList<QByteArray> replies;
            for (const QByteArray& piece :
                 {stream.left(first), stream.mid(first, second - first), stream.mid(second)}) {
                assembler.append(piece);
                for (QByteArray reply = assembler.next(); !reply.isEmpty(); reply = assembler.next())
                    replies << reply;
            }
            EXPECT_EQ(replies, QList<QByteArray>({fromHex(registerReply), fromHex(writeReply)}))
                << first << ' ' << second;
        }
    }
}

TEST(ReplyAssembler, GivesNothingBeforeTheLastByte)
{
    ReplyAssembler assembler;
    assembler.append(fromHex(registerReply).chopped(1));
    EXPECT_TRUE(assembler.next().isEmpty());
    EXPECT_TRUE(assembler.partial());
    EXPECT_FALSE(assembler.outOfStep());
}

TEST(ReplyAssembler, TakesTheShortestAndTheLongestReply)
{
    ReplyAssembler assembler;
    const QByteArray shortest = fromHex("0001 0000 0002 01 81");
    const QByteArray longest = fromHex("0001 0000 00FE 01 03") + QByteArray(252, 'x');
    assembler.append(shortest + longest);
    EXPECT_EQ(assembler.next(), shortest);
    EXPECT_EQ(assembler.next(), longest);
}

TEST(ReplyAssembler, DoesNotTrustHeadersThatNoReplyHas)
{
    const char* const headers[] = {
        "0001 0001 0005", // another protocol
        "0001 0100 0005",
        "0001 0000 0000", // too short for a function code
        "0001 0000 0001",
        "0001 0000 00FF", // longer than any reply
        "0001 0000 FFFF",
    };
    for (const char* header : headers) {
        ReplyAssembler assembler;
        assembler.append(fromHex(header));
        EXPECT_TRUE(assembler.next().isEmpty()) << header;
        EXPECT_TRUE(assembler.outOfStep()) << header;
    }
}

TEST(ReplyAssembler, GivesTheRepliesBeforeGarbageAndNothingAfterIt)
{
    ReplyAssembler assembler;
    assembler.append(fromHex(registerReply) + "GET / HTTP/1.1\r\n" + fromHex(writeReply));
    EXPECT_EQ(assembler.next(), fromHex(registerReply));
    EXPECT_TRUE(assembler.next().isEmpty());
    assembler.append(fromHex(writeReply));
    EXPECT_TRUE(assembler.next().isEmpty());
    EXPECT_TRUE(assembler.outOfStep());
}

TEST(ReplyAssembler, StartsAgainOnANewConnection)
{
    ReplyAssembler assembler;
    assembler.append("garbage!");
    EXPECT_TRUE(assembler.next().isEmpty());
    assembler.reset();
    EXPECT_FALSE(assembler.outOfStep());
    EXPECT_FALSE(assembler.partial());
    assembler.append(fromHex(writeReply));
    EXPECT_EQ(assembler.next(), fromHex(writeReply));
}

} // namespace
