// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/metric_types.h"

#include "gateway/sparkplug/birth_number.h"
#include "gateway/sparkplug/host_state.h"
#include "gateway/sparkplug/payloads.h"
#include "sparkplug_b.pb.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace
{

using plc::Datatype;
using plc::HostState;

std::string commanded(Datatype type, const char* hexOfMetric)
{
    plc::sparkplug::Metric metric;
    const QByteArray bytes = QByteArray::fromHex(hexOfMetric);
    EXPECT_TRUE(metric.ParseFromArray(bytes.constData(), bytes.size()));
    QString error;
    const QString text = plc::commandText(metric, type, &error);
    EXPECT_EQ(text.isEmpty(), !error.isEmpty());
    return text.toStdString();
}

TEST(MetricTypes, TakeNegativeNumbersAsSendersWriteThem)
{
    EXPECT_EQ(commanded(Datatype::Int16, "50 fbffffff0f"), "-5");           // extended to 32 bits
    EXPECT_EQ(commanded(Datatype::Int16, "50 fbff03"), "-5");               // the 16 bits alone
    EXPECT_EQ(commanded(Datatype::Int64, "58 fbffffffffffffffff01"), "-5"); // 64 bits
    EXPECT_EQ(commanded(Datatype::Uint16, "50 ffff03"), "65535");
    EXPECT_EQ(commanded(Datatype::Uint32, "58 ffffffff0f"), "4294967295"); // in the longer field
}

TEST(MetricTypes, RefuseWhatWouldLoseBits)
{
    EXPECT_EQ(commanded(Datatype::Uint16, "50 808004"), "");     // 65536
    EXPECT_EQ(commanded(Datatype::Int16, "50 808004"), "");      // its low bits are 0
    EXPECT_EQ(commanded(Datatype::Uint32, "58 8080808010"), ""); // 2^32
}

TEST(MetricTypes, RefuseValuesOfAnotherKind)
{
    EXPECT_EQ(commanded(Datatype::Uint16, "7a0131"), "");     // the text "1"
    EXPECT_EQ(commanded(Datatype::Boolean, "5001"), "");      // the number 1
    EXPECT_EQ(commanded(Datatype::Uint16, "5001 3801"), "");  // null
    EXPECT_EQ(commanded(Datatype::Uint16, "5001 2801"), "");  // historical
    EXPECT_EQ(commanded(Datatype::Float, "65 0000c07f"), ""); // not a number
    EXPECT_EQ(commanded(Datatype::Float, "65 00004841"), "12.5");
    EXPECT_EQ(commanded(Datatype::Boolean, "7001"), "1");
}

TEST(MetricTypes, PackArraysInLittleEndian)
{
    plc::sparkplug::Metric metric;
    plc::setMetricValue(&metric, Datatype::Int16Array, QStringLiteral("[-2,300]"));
    EXPECT_EQ(QByteArray::fromStdString(metric.bytes_value()).toHex(), "feff2c01");
    plc::setMetricValue(&metric, Datatype::BooleanArray, QStringLiteral("[1,0,0,0,0,0,0,0,1,1]"));
    EXPECT_EQ(QByteArray::fromStdString(metric.bytes_value()).toHex(), "0a00000080c0");
}

TEST(Payloads, OfADeathHoldTheNumberOfTheBirthAlone)
{
    EXPECT_EQ(plc::deathOfNode(0).toHex(), "120b0a05626453657120045800");
}

TEST(HostState, TakesTheNewestAlone)
{
    HostState host;
    EXPECT_EQ(host.take("ONLINE"), HostState::None);
    EXPECT_EQ(host.take("{\"online\":1,\"timestamp\":5}"), HostState::None);
    EXPECT_EQ(host.take("{\"online\":true,\"timestamp\":\"5\"}"), HostState::None);
    EXPECT_EQ(host.take("{\"online\":false,\"timestamp\":5}"),
              HostState::Offline); // none before: the word decides
    EXPECT_EQ(host.take("{\"online\":true,\"timestamp\":4}"), HostState::None);
    EXPECT_EQ(host.take("{\"online\":true,\"timestamp\":5,\"more\":1}"), HostState::Online);
    EXPECT_EQ(host.take("{\"online\":false,\"timestamp\":4}"), HostState::None);
    EXPECT_EQ(host.take("{\"online\":false,\"timestamp\":5}"), HostState::Offline);
}

TEST(BirthNumber, GoesOnAfterARestartAndBeginsAnewBehind255)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("birth-number"));
    EXPECT_EQ(plc::BirthNumber(path).next(), 0);
    EXPECT_EQ(plc::BirthNumber(path).next(), 1);
    plc::BirthNumber number(path);
    for (int times = 2; times < 256; ++times)
        number.next();
    EXPECT_EQ(number.current(), 255);
    EXPECT_EQ(plc::BirthNumber(path).next(), 0);
}

} // namespace
