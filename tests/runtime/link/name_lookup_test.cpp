// SPDX-License-Identifier: MIT
#include "runtime/link/name_lookup.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace
{

using plc::NameLookup;

const int longMs = 20000;
const int shortMs = 30;

class NameLookupTest : public testing::Test
{
protected:
    ~NameLookupTest() override { m_release.set_value(); }

    /// Answers when the test ends, or release() was called.
    NameLookup::Ask silent()
    {
        return [asked = asked, released = m_release.get_future().share()](const std::string&) {
            ++*asked;
            released.wait();
            return NameLookup::Answer{{"127.0.0.2"}, {}};
        };
    }

    // The threads that ask may outlive the test.
    const std::shared_ptr<std::atomic<int>> asked = std::make_shared<std::atomic<int>>(0);
    std::atomic<bool> stopping{false};

private:
    std::promise<void> m_release;
};

TEST_F(NameLookupTest, GivesWhatTheSystemAnswers)
{
    NameLookup lookup([](const std::string& host) { return NameLookup::Answer{{host + " is here"}, {}}; });
    EXPECT_EQ(lookup.addressesOf("plc", longMs, stopping)->addresses.at(0), "plc is here");
}

TEST_F(NameLookupTest, GivesItsError)
{
    NameLookup lookup([](const std::string&) {
        return NameLookup::Answer{{}, std::make_error_code(std::errc::host_unreachable)};
    });
    EXPECT_EQ(lookup.addressesOf("plc", longMs, stopping)->error, std::errc::host_unreachable);
}

TEST_F(NameLookupTest, DoesNotWaitLongerThanItMay)
{
    NameLookup lookup(silent());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(lookup.addressesOf("plc", shortMs, stopping));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(longMs));
}

TEST_F(NameLookupTest, EndsWhenItIsToStop)
{
    NameLookup lookup(silent());
    std::thread stopper([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(shortMs));
        stopping = true;
    });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(lookup.addressesOf("plc", longMs, stopping));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(longMs / 2));
    stopper.join();
}

TEST_F(NameLookupTest, DoesNotAskAgainWhileAnAnswerIsAwaited)
{
    NameLookup lookup(silent());
    for (int turn = 0; turn < 5; ++turn)
        EXPECT_FALSE(lookup.addressesOf("plc", shortMs, stopping));
    EXPECT_LE(*asked, 1);
}

} // namespace
