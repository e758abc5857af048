// SPDX-License-Identifier: MIT
#include "runtime/modbus/return_codes.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(IsSuccess, IsTrueForTheTwoCodesOfSuccess)
{
    EXPECT_TRUE(isSuccess(1));
    EXPECT_TRUE(isSuccess(100));
    for (const int code : {-1, 0, 2, 11, 41, 71, 99, 101, 111, 141, 171, 200})
        EXPECT_FALSE(isSuccess(code)) << code;
}

} // namespace
