#include "runtime/link/reply_assembler.h"

#include <gtest/gtest.h>

#include <QList>

namespace
{

using plc::ReplyAssembler;

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

const char* const registerReply = "0001 0000 0005 01 03 02 1234";
const char* const writeReply = "0002 0000 0006 01 06 0005 1234";

TEST(ReplyAssembler, GivesAWholeReply)
{
    ReplyAssembler assembler;
    assembler.append(hex(registerReply));
    EXPECT_EQ(assembler.next(), hex(registerReply));
    EXPECT_TRUE(assembler.next().isEmpty());
    EXPECT_FALSE(assembler.partial());
}

TEST(ReplyAssembler, PutsTwoRepliesTogetherWhereverTheStreamIsCut)
{
    const QByteArray stream = hex(registerReply) + hex(writeReply);
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
            EXPECT_EQ(replies, QList<QByteArray>({hex(registerReply), hex(writeReply)}))
                << first << ' ' << second;
        }
    }
}

TEST(ReplyAssembler, GivesNothingBeforeTheLastByte)
{
    ReplyAssembler assembler;
    assembler.append(hex(registerReply).chopped(1));
    EXPECT_TRUE(assembler.next().isEmpty());
    EXPECT_TRUE(assembler.partial());
    EXPECT_FALSE(assembler.outOfStep());
}

TEST(ReplyAssembler, TakesTheShortestAndTheLongestReply)
{
    ReplyAssembler assembler;
    const QByteArray shortest = hex("0001 0000 0002 01 81");
    const QByteArray longest = hex("0001 0000 00FE 01 03") + QByteArray(252, 'x');
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
        assembler.append(hex(header));
        EXPECT_TRUE(assembler.next().isEmpty()) << header;
        EXPECT_TRUE(assembler.outOfStep()) << header;
    }
}

TEST(ReplyAssembler, GivesTheRepliesBeforeGarbageAndNothingAfterIt)
{
    ReplyAssembler assembler;
    assembler.append(hex(registerReply) + "GET / HTTP/1.1\r\n" + hex(writeReply));
    EXPECT_EQ(assembler.next(), hex(registerReply));
    EXPECT_TRUE(assembler.next().isEmpty());
    assembler.append(hex(writeReply));
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
    assembler.append(hex(writeReply));
    EXPECT_EQ(assembler.next(), hex(writeReply));
}

} // namespace
