// SPDX-License-Identifier: MIT
#include "runtime/modbus/exception_words.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(ExceptionWords, AreThoseOfModbus)
{
    EXPECT_EQ(exceptionWords(1), QLatin1String("illegal function"));
    EXPECT_EQ(exceptionWords(2), QLatin1String("illegal data address"));
    EXPECT_EQ(exceptionWords(3), QLatin1String("illegal data value"));
    EXPECT_EQ(exceptionWords(4), QLatin1String("server device failure"));
    EXPECT_EQ(exceptionWords(5), QLatin1String("acknowledge: accepted, still at work"));
    EXPECT_EQ(exceptionWords(6), QLatin1String("server device busy"));
    EXPECT_EQ(exceptionWords(8), QLatin1String("memory parity error"));
    EXPECT_EQ(exceptionWords(10), QLatin1String("gateway path unavailable"));
    EXPECT_EQ(exceptionWords(11), QLatin1String("gateway target device failed to respond"));
    for (const int unnamed : {0, 7, 9, 12, 77})
        EXPECT_EQ(exceptionWords(unnamed), QLatin1String("an exception that Modbus does not name"));
}

} // namespace
