// SPDX-License-Identifier: MIT
// Values of several words are read by one request each, whatever the length of the requests.

#include "panel/plcpanel_run.h"
#include "support/hostile_server.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

namespace
{

using test::Answer;
using test::HostileServer;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Every word of a reply is the number of the request: words of two replies differ.
Answer numbered(const QByteArray& request, int index)
{
    QByteArray reply = test::rightReply(request);
    for (int at = 9; at + 1 < reply.size(); at += 2) {
        reply[at] = static_cast<char>(index >> 8);
        reply[at + 1] = static_cast<char>(index);
    }
    return {reply, false};
}

/// \return the values of the last line that is shown of variable \a name
QJsonArray shownOf(const HostileServer& server, const char* list, int maxBlockCount)
{
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    file.write(list);
    file.close();
    const auto run = test::plcpanel({"watch", "--vars", file.fileName(), "--once", "--json", "--max-block",
                                     QString::number(maxBlockCount), "--controller", server.controller()});
    EXPECT_EQ(run.status, 0) << run.errors;
    const QByteArray last = QByteArray::fromStdString(run.out).trimmed().split('\n').last();
    const QJsonValue value = QJsonDocument::fromJson(last).object().value(QStringLiteral("value"));
    return value.isArray() ? value.toArray() : QJsonArray{value};
}

int wordIn(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at)) << 8 | static_cast<unsigned char>(bytes.at(at + 1));
}

int tornIn(const QJsonArray& values)
{
    int torn = 0;
    for (const QJsonValue value : values) {
        const auto number = static_cast<quint32>(value.toDouble());
        torn += (number >> 16) != (number & 0xFFFF);
    }
    return torn;
}

} // namespace

class WholeValues : public testing::TestWithParam<int>
{
};

TEST_P(WholeValues, OfALongLineOfDoubleWordsInWords)
{
    HostileServer server(numbered);
    const QJsonArray values =
        shownOf(server, "name,area,address,station,count,type\nmany,9,0,,80,uint32\n", GetParam());
    EXPECT_EQ(values.size(), 80);
    EXPECT_EQ(tornIn(values), 0);
    EXPECT_THAT(server.seen(), Not(IsEmpty()));
}

TEST_P(WholeValues, WhereAnotherLineEndsInsideOne)
{
    HostileServer server(numbered);
    const int high = GetParam(); // the value's second word, the first that the other line has not
    const QByteArray list = "name,area,address,station,count,type\nwords,9,0,," + QByteArray::number(high) +
                            ",uint16\nwide,9," + QByteArray::number(high - 1) + ",,1,uint32\n";
    EXPECT_EQ(tornIn(shownOf(server, list.constData(), GetParam())), 0);
    for (const auto& request : server.seen()) {
        const int begin = wordIn(request.bytes, 8);
        const int end = begin + wordIn(request.bytes, 10);
        EXPECT_NE(end, high) << "a request from " << begin << " on ends inside the value";
    }
}

INSTANTIATE_TEST_SUITE_P(Blocks, WholeValues, testing::Values(2, 3, 7, 62, 63, 124, 125));

TEST(WholeValuesOfDoubleWords, AreInOneRequestEach)
{
    for (const int maxBlockCount : {2, 3, 7, 62, 63}) {
        HostileServer server(numbered);
        const QJsonArray values =
            shownOf(server, "name,area,address,station,count,type\nmany,14,200,,80,uint32\n", maxBlockCount);
        EXPECT_EQ(values.size(), 80);
        EXPECT_EQ(tornIn(values), 0) << maxBlockCount;
    }
}

TEST(WrittenValues, OfTheAreaOfDoubleWordsAreWholeInTheirRequests)
{
    for (const char* maxBlockCount : {"2", "3", "125"}) {
        HostileServer server([](const QByteArray& request, int) {
            return Answer{test::rightReply(request), false};
        });
        QStringList values;
        for (int value = 0; value < 150; ++value)
            values << QString::number(value);
        const auto run = test::plcpanel({"write", "14:200=" + values.join(','), "--max-block", maxBlockCount,
                                         "--controller", server.controller()});
        EXPECT_EQ(run.status, 0) << run.errors;
        for (const auto& request : server.seen())
            EXPECT_EQ(static_cast<unsigned char>(request.bytes.at(11)) % 2, 0) << maxBlockCount;
    }
}

TEST(WholeValuesOfDoubleWords, AreRefusedOverRemoteFramesBeforeAnythingIsSent)
{
    HostileServer server([](const QByteArray&, int) { return Answer(); });
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("name,area,address,type\nnarrow,14,200,uint32\nwide,14,202,uint64\n");
    file.close();
    for (const char* command : {"watch", "check"}) {
        const auto run = test::plcpanel(
            {command, "--vars", file.fileName(), "--remote", "--controller", server.controller()});
        EXPECT_EQ(run.status, 2) << command;
        EXPECT_THAT(run.errors, HasSubstr("line 3: "));
        EXPECT_THAT(run.errors,
                    HasSubstr("a value of 2 double words cannot be refreshed over remote frames"));
        EXPECT_THAT(run.errors, Not(HasSubstr("line 2: ")));
    }
    EXPECT_EQ(server.connections(), 0);
}
