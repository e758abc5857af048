// SPDX-License-Identifier: MIT
// What the kind of a failure says about the controller.

#include "runtime/model/failure.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(Failure, IsUnsentWhenTheRequestCannotHaveReachedTheController)
{
    for (const FailureKind kind :
         {FailureKind::Invalid, FailureKind::NotRunning, FailureKind::NotTried, FailureKind::StationOff,
          FailureKind::NotTaken, FailureKind::Discarded, FailureKind::Replaced, FailureKind::Purged})
        EXPECT_TRUE(isUnsent(kind)) << static_cast<int>(kind);
}

TEST(Failure, IsNotUnsentWhenATryMayHaveGoneOut)
{
    for (const FailureKind kind :
         {FailureKind::None, FailureKind::NotConnected, FailureKind::NoReply, FailureKind::Exception,
          FailureKind::BadReply, FailureKind::Stopped, FailureKind::OutOfStep, FailureKind::NotReported})
        EXPECT_FALSE(isUnsent(kind)) << static_cast<int>(kind);
}

TEST(Failure, EqualsOnlyOneOfTheSameKindAndMembers)
{
    Failure failure(FailureKind::Exception);
    failure.exception = 2;
    Failure other = failure;
    EXPECT_TRUE(failure == other);
    other.exception = 3;
    EXPECT_FALSE(failure == other);
    EXPECT_FALSE(failure == Failure());
}

} // namespace
