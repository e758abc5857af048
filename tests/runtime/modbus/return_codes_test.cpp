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
    EXPECT_FALSE(isSuccess(0));
    EXPECT_FALSE(isSuccess(41));
}

} // namespace
