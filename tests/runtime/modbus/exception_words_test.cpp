// SPDX-License-Identifier: MIT
#include "runtime/modbus/exception_words.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(ExceptionWords, AreThoseOfModbus)
{
    EXPECT_EQ(exceptionWords(2), QLatin1String("illegal data address"));
    EXPECT_EQ(exceptionWords(11), QLatin1String("gateway target device failed to respond"));
    EXPECT_EQ(exceptionWords(77), QLatin1String("an exception that Modbus does not name"));
}

} // namespace
