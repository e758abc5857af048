// SPDX-License-Identifier: MIT
#include "capture/request_cutter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::IsEmpty;

const QByteArray read = QByteArray::fromHex("000100000006010300640002");
const QByteArray remoteRead = QByteArray::fromHex("16000000010009000000050001"
                                                  "0000000000000000"
                                                  "26");

std::vector<QByteArray> requestsIn(RequestCutter& cutter, const QByteArray& bytes)
{
    std::vector<QByteArray> requests;
    cutter.append(bytes);
    for (QByteArray request = cutter.next(); !request.isEmpty(); request = cutter.next())
        requests.push_back(request);
    return requests;
}

TEST(RequestCutter, ModbusTcpRequestsEndWhereTheirHeaderSays)
{
    const auto cutter = requestCutterFor(FrameFormat::ModbusTcp);
    EXPECT_THAT(requestsIn(*cutter, read + read.left(5)), ElementsAre(read));
    EXPECT_THAT(requestsIn(*cutter, read.mid(5)), ElementsAre(read));
}

TEST(RequestCutter, AStreamOfModbusTcpCanBeOutOfStepUntilItBeginsAnew)
{
    const auto cutter = requestCutterFor(FrameFormat::ModbusTcp);
    EXPECT_THAT(requestsIn(*cutter, "GET / HTTP/1.1"), IsEmpty());
    EXPECT_TRUE(cutter->outOfStep());
    cutter->reset();
    EXPECT_FALSE(cutter->outOfStep());
    EXPECT_THAT(requestsIn(*cutter, read), ElementsAre(read));
}

TEST(RequestCutter, RemoteRequestsEndWhereSizeAndSumFit)
{
    const auto cutter = requestCutterFor(FrameFormat::Remote);
    EXPECT_THAT(requestsIn(*cutter, remoteRead.left(9)), IsEmpty());
    EXPECT_THAT(requestsIn(*cutter, remoteRead.mid(9)), ElementsAre(remoteRead));
    EXPECT_THAT(requestsIn(*cutter, remoteRead), ElementsAre(remoteRead));
}

TEST(RequestCutter, ARemoteRequestWithAWrongSumIsNone)
{
    const auto cutter = requestCutterFor(FrameFormat::Remote);
    QByteArray wrong = remoteRead;
    wrong[wrong.size() - 1] = '\x27';
    EXPECT_THAT(requestsIn(*cutter, wrong), IsEmpty());
    cutter->reset();
    EXPECT_THAT(requestsIn(*cutter, remoteRead), ElementsAre(remoteRead));
}

} // namespace
