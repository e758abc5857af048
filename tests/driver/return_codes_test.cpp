// SPDX-License-Identifier: MIT
#include "driver/return_codes.h"

#include "driver_fixture.h"

namespace
{

class ReturnCodes : public DriverTest
{
protected:
    void requestInFlight(int hostKey)
    {
        Protocol frame = Protocol();
        frame.var.hostKey = hostKey;
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList.append(frame);
    }
};

} // namespace

TEST_F(ReturnCodes, EachOutcomeHasItsBaseAndAFinePartOfTheKey)
{
    struct Row {
        int outcome;
        int key0, key1, key11, key12, keyMinus1;
    };
    const Row rows[] = {
        {0, 1, 1, 1, 1, 1},           // local or remote reply accepted
        {1, 11, 12, 22, 11, 11},      // local data check
        {2, 41, 42, 52, 41, 41},      // local time-out
        {3, 71, 72, 82, 71, 71},      // local length
        {4, 100, 100, 100, 100, 100}, // remote accepted, not filed
        {5, 111, 112, 122, 111, 111}, // remote data check
        {6, 141, 142, 152, 141, 141}, // remote time-out
        {7, 171, 172, 182, 171, 171}, // remote length
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.outcome);
        const std::pair<int, int> codes[] = {
            {0, row.key0}, {1, row.key1}, {11, row.key11}, {12, row.key12}, {-1, row.keyMinus1}};
        for (const std::pair<int, int>& code : codes) {
            requestInFlight(code.first);
            EXPECT_EQ(code.second, GetDriverReturnValue(row.outcome)) << "key " << code.first;
        }
    }
}

TEST_F(ReturnCodes, EveryKeyFrom1To11HasACodeOfItsOwn)
{
    for (int key = 1; key <= 11; ++key) {
        requestInFlight(key);
        EXPECT_EQ(71 + key, GetDriverReturnValue(3));
    }
}

TEST_F(ReturnCodes, AnyOtherOutcomeIs200EvenWithNoRequestInFlight)
{
    for (int outcome : {8, 9, 100, -1, 2147483647, -2147483647 - 1})
        EXPECT_EQ(200, GetDriverReturnValue(outcome)) << outcome;
}

TEST_F(ReturnCodes, SuccessNeedsNoRequestInFlight)
{
    EXPECT_EQ(1, GetDriverReturnValue(0));
    EXPECT_EQ(100, GetDriverReturnValue(4));
}

TEST_F(ReturnCodes, ABaseGrowsByOneAndTheKey)
{
    const std::pair<int, int> codes[] = {
        {-2147483647 - 1, 1001}, {0, 1001}, {1, 1002}, {5, 1006}, {11, 1012}, {12, 1001}, {2147483647, 1001}};
    for (const std::pair<int, int>& code : codes) {
        requestInFlight(code.first);
        EXPECT_EQ(code.second, SwitchErrorReturn(1000)) << "key " << code.first;
    }
}

TEST_F(ReturnCodes, TheKeyIsTakenFromTheHeadFrame)
{
    requestInFlight(2);
    Protocol behind = Protocol();
    behind.var.hostKey = 9;
    PLC_driver.protocolList.append(behind);

    EXPECT_EQ(43, GetDriverReturnValue(2));
}
