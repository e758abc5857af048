// SPDX-License-Identifier: MIT
#include "runtime/modbus/return_code_words.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(ResultWords, NameEveryCodeOfEachRange)
{
    struct Row {
        int first;
        int last;
        const char* words;
    };
    const Row rows[] = {
        {0, 0, "failed, to be tried again"},
        {1, 1, "done"},
        {11, 22, "the reply failed the data check"},
        {41, 52, "no reply"},
        {71, 82, "the reply has the wrong length"},
        {100, 100, "done (remote)"},
        {111, 122, "the remote reply failed the data check"},
        {141, 152, "no remote reply"},
        {171, 182, "the remote reply has the wrong length"},
        {200, 200, "an outcome that the driver does not know"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(resultWords(row.first), QLatin1String(row.words)) << row.first;
        EXPECT_EQ(resultWords(row.last), QLatin1String(row.words)) << row.last;
    }
}

TEST(ResultWords, SayThatOtherCodesHaveNoMeaning)
{
    for (const int code : {-1, 2, 10, 23, 40, 53, 70, 83, 99, 101, 110, 123, 140, 153, 170, 183, 199, 201})
        EXPECT_EQ(resultWords(code), QLatin1String("a result code that has no meaning")) << code;
}

} // namespace
