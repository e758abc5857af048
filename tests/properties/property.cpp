// SPDX-License-Identifier: MIT
#include "properties/property.h"

#include <cstdlib>
#include <sstream>

namespace test
{

rc::detail::TestParams parametersOf(int cases)
{
    rc::detail::TestParams parameters = rc::detail::configuration().testParams;
    if (!std::getenv("RC_PARAMS")) {
        parameters.seed = 20261122;
        parameters.maxSuccess = cases;
    }
    return parameters;
}

void judge(const rc::detail::TestResult& result, const rc::detail::TestParams& parameters)
{
    if (result.is<rc::detail::SuccessResult>())
        return;
    std::ostringstream words;
    rc::detail::printResultMessage(result, words);
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    ADD_FAILURE() << words.str() << "\n\nTo run it again:\n  RC_PARAMS=\"seed=" << parameters.seed
                  << " max_success=" << parameters.maxSuccess << " max_size=" << parameters.maxSize
                  << "\" properties_test --gtest_filter=" << test.test_suite_name() << '.' << test.name();
}

} // namespace test
