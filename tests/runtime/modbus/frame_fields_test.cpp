// SPDX-License-Identifier: MIT
#include "runtime/modbus/frame_fields.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(ExceptionCode, IsThatOfAnExceptionOnly)
{
    EXPECT_EQ(exceptionCode(QByteArray::fromHex("0000 0000 0003 01 83 02")), 2);
    EXPECT_EQ(exceptionCode(QByteArray::fromHex("0000 0000 0005 01 03 02 1234")), 0);
    EXPECT_EQ(exceptionCode(QByteArray()), 0);
    EXPECT_EQ(exceptionCode(QByteArray::fromHex("0000 0000 0002 01 83")), 0);
}

} // namespace
