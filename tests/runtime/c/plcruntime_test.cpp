// SPDX-License-Identifier: MIT
// The interface for C, called as a C program does.
#include "runtime/c/plcruntime.h"
#include "runtime/model/cyclic_value.h"
#include "support/hostile_server.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

/// What a done callback is told.
struct Told {
    std::mutex mutex;
    std::vector<int> failures;
    std::vector<double> numbers;
    std::string text;
    std::string words;

    std::size_t times()
    {
        std::lock_guard<std::mutex> lock(mutex);
        return failures.size();
    }
};

void note(void* context, const plcruntime_result* result)
{
    Told& told = *static_cast<Told*>(context);
    std::lock_guard<std::mutex> lock(told.mutex);
    told.words = plcruntime_result_failure_text(result);
    const plcruntime_value* value = plcruntime_result_value(result);
    for (std::size_t index = 0; value != nullptr && index < plcruntime_value_count(value); ++index)
        told.numbers.push_back(plcruntime_value_double(value, index));
    told.text = value != nullptr ? plcruntime_value_text(value) : "";
    told.failures.push_back(plcruntime_result_failure(result));
}

class PlcRuntime : public RuntimeFixture
{
protected:
    PlcRuntime() { open({}); }
    ~PlcRuntime() override { plcruntime_close(handle); }

    void open(std::vector<plcruntime_option> options)
    {
        plcruntime_close(handle);
        const std::string port = std::to_string(controller->port());
        options.insert(options.begin(), {"poll_ms", "1"});
        options.insert(options.begin(), {"driver", builtDriver()});
        options.insert(options.begin(), {"port", port.c_str()});
        options.push_back({nullptr, nullptr});
        ASSERT_EQ(plcruntime_open(options.data(), &handle), PLCRUNTIME_OK) << plcruntime_last_error();
    }

    void start() { ASSERT_EQ(plcruntime_start(handle), PLCRUNTIME_OK) << plcruntime_last_error(); }

    /// \return how a request ended that was taken with \a status
    static int endOf(int status, Told& told)
    {
        EXPECT_EQ(status, PLCRUNTIME_OK) << plcruntime_last_error();
        if (status != PLCRUNTIME_OK || !eventually([&] { return told.times() > 0; }))
            return -1;
        std::lock_guard<std::mutex> lock(told.mutex);
        EXPECT_EQ(told.failures.size(), 1u);
        return told.failures.front();
    }

    int writeNumber(const char* variable, const char* type, double value)
    {
        Told told;
        return endOf(plcruntime_write_number(handle, variable, type, value, note, &told), told);
    }

    std::vector<double> numbers(const char* variable, const char* type)
    {
        Told told;
        EXPECT_EQ(endOf(plcruntime_read(handle, variable, type, note, &told), told), PLCRUNTIME_NO_FAILURE);
        return told.numbers;
    }

    plcruntime* handle = nullptr;
};

TEST_F(PlcRuntime, WritesAndReadsNumbersOfEveryType)
{
    start();
    struct Case {
        const char* variable;
        const char* type;
        double value;
    };
    const Case cases[] = {
        {"2:17", nullptr, 1},         {"8:10.3", "bit", 1},         {"9:10", "int16", -5},
        {"9:12", nullptr, 65535},     {"9:14", "int32", -2000000},  {"9:16", "uint32", 4e9},
        {"9:18", "float32", -21.5},   {"9:20", "hex", 4711},        {"14:205", "int32", -7},
        {"14:206", nullptr, 4e9 + 1}, {"14:207", "float32", 0.125}, {"9:30", "float64", 0.1},
        {"9:34", "bcd16", 1234}};
    for (const Case& each : cases) {
        EXPECT_EQ(writeNumber(each.variable, each.type, each.value), PLCRUNTIME_NO_FAILURE) << each.variable;
        EXPECT_THAT(numbers(each.variable, each.type), ElementsAre(each.value)) << each.variable;
    }
    EXPECT_EQ(inController(*controller, 9, 18), 0u) << "the low half of -21.5 comes first";
    EXPECT_EQ(inController(*controller, 9, 19), 0xC1ACu);
}

TEST_F(PlcRuntime, WritesElementsAndTextsAndReadsThem)
{
    start();
    const uint32_t elements[] = {7, 8, 65535};
    Told written;
    EXPECT_EQ(endOf(plcruntime_write(handle, "9:100x3", elements, 3, note, &written), written), 0);
    EXPECT_THAT(numbers("9:100x3", nullptr), ElementsAre(7, 8, 65535));
    EXPECT_THAT(numbers("9:101", "int32"), ElementsAre(-65528));
    Told text, read;
    EXPECT_EQ(endOf(plcruntime_write_text(handle, "9:200x9", "LEMON TEA", note, &text), text), 0);
    EXPECT_EQ(endOf(plcruntime_read(handle, "9:200x9", "text", note, &read), read), 0);
    EXPECT_EQ(read.text, "LEMON TEA");
    EXPECT_EQ(inController(*controller, 9, 200), 0x454Cu) << "the low byte first";
}

TEST_F(PlcRuntime, RefusesWhatCannotBeAndSaysWhy)
{
    start();
    const auto refused = [&](int status, const char* words) {
        EXPECT_EQ(status, PLCRUNTIME_INVALID) << words;
        EXPECT_THAT(plcruntime_last_error(), HasSubstr(words));
    };
    Told told;
    refused(plcruntime_write_number(handle, "9:0", "int16", 40000, note, &told), "40000");
    refused(plcruntime_write_number(handle, "9:0", nullptr, 1.5, note, &told), "1.5");
    refused(plcruntime_write_number(handle, "9:0", "float32", 1e300, note, &told), "too large");
    refused(plcruntime_write_number(handle, "9:1x2", nullptr, 1, note, &told), "one value");
    refused(plcruntime_write_number(handle, "2:0", "float32", 1, note, &told), "area 2 holds no float32");
    refused(plcruntime_write_text(handle, "9:1x2", "too long", note, &told), "8 characters, the variable 2");
    refused(plcruntime_read(handle, "9:0", "double", note, &told), "there is no type \"double\"");
    refused(plcruntime_read(handle, "99:0", nullptr, note, &told), "99");
    refused(plcruntime_read(handle, nullptr, nullptr, note, &told), "no variable");
    refused(plcruntime_read(handle, "9:0", nullptr, nullptr, nullptr), "callback");
    refused(plcruntime_read(nullptr, "9:0", nullptr, note, &told), "NULL");
    refused(plcruntime_write(handle, "9:0", nullptr, 1, note, &told), "no elements");
    refused(plcruntime_switch_station(handle, 256, 1), "no station");
    refused(plcruntime_queued(handle, 1, 7), "no kind");
    refused(plcruntime_queued(handle, 1, -1), "no kind");
    refused(plcruntime_queued(handle, -2, PLCRUNTIME_WRITES), "-2 is no station");
    refused(plcruntime_queued(handle, 256, PLCRUNTIME_WRITES), "256 is no station");
    refused(plcruntime_switch_station(handle, 1, 2), "give 0 or 1");
    EXPECT_EQ(told.times(), 0u) << "who is refused at once is not called";
}

TEST_F(PlcRuntime, RefusesValuesThatWouldBeTorn)
{
    open({{"max_block_words", "3"}});
    EXPECT_EQ(plcruntime_subscribe(handle, "9:0", "float64", nullptr, nullptr), PLCRUNTIME_INVALID);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("a value of 4 elements of area 9 does not fit"));
    open({{"remote_mode", "1"}});
    EXPECT_EQ(plcruntime_subscribe(handle, "14:200", "uint64", nullptr, nullptr), PLCRUNTIME_INVALID);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("a value of 2 double words cannot be refreshed"));
}

TEST_F(PlcRuntime, RefusesOptionsThatAreNone)
{
    plcruntime* refused = handle;
    const plcruntime_option unknown[] = {{"prot", "502"}, {nullptr, nullptr}};
    EXPECT_EQ(plcruntime_open(unknown, &refused), PLCRUNTIME_INVALID);
    EXPECT_EQ(refused, nullptr);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("no option \"prot\"; options are host, port"));
    const plcruntime_option noNumber[] = {{"port", "http"}, {nullptr, nullptr}};
    EXPECT_EQ(plcruntime_open(noNumber, &refused), PLCRUNTIME_INVALID);
    const plcruntime_option noFlag[] = {{"multi_station", "2"}, {nullptr, nullptr}};
    EXPECT_EQ(plcruntime_open(noFlag, &refused), PLCRUNTIME_INVALID);
    const plcruntime_option outside[] = {{"port", "65536"}, {nullptr, nullptr}};
    EXPECT_EQ(plcruntime_open(outside, &refused), PLCRUNTIME_INVALID);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("1..65535"));
}

TEST_F(PlcRuntime, WantsAPlaceForWhatItHandsOut)
{
    EXPECT_EQ(plcruntime_open(nullptr, nullptr), PLCRUNTIME_INVALID);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("no place for the runtime"));
    EXPECT_EQ(plcruntime_get(handle, 0, nullptr), PLCRUNTIME_INVALID);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("no place for the value"));
}

TEST_F(PlcRuntime, RefusesCallsAtTheWrongTimeAndClosingOutOfACallback)
{
    Told told;
    EXPECT_EQ(plcruntime_read(handle, "9:0", nullptr, note, &told), PLCRUNTIME_WRONG_TIME);
    start();
    EXPECT_EQ(plcruntime_start(handle), PLCRUNTIME_WRONG_TIME);
    EXPECT_EQ(plcruntime_subscribe(handle, "9:0", nullptr, nullptr, nullptr), PLCRUNTIME_WRONG_TIME);
    struct Context {
        plcruntime* handle;
        std::atomic<int> status;
    } context = {handle, {1}};
    const auto close = [](void* given, const plcruntime_result*) {
        Context& itsOwn = *static_cast<Context*>(given);
        itsOwn.status = plcruntime_close(itsOwn.handle);
    };
    ASSERT_EQ(plcruntime_read(handle, "9:0", nullptr, close, &context), PLCRUNTIME_OK);
    EXPECT_TRUE(eventually([&] { return context.status == PLCRUNTIME_WRONG_TIME; }));
}

TEST_F(PlcRuntime, OneThatCannotStartSaysWhy)
{
    open({{"driver", "/nowhere/libplcdriver.so"}});
    EXPECT_EQ(plcruntime_start(handle), PLCRUNTIME_CANNOT_START);
    EXPECT_THAT(plcruntime_last_error(), HasSubstr("cannot be loaded"));
    EXPECT_EQ(plcruntime_is_connected(handle), PLCRUNTIME_WRONG_TIME) << "it is not started";
    EXPECT_EQ(plcruntime_start(handle), PLCRUNTIME_CANNOT_START) << "it may be tried again";
}

/// The numbers of what was read, one more than there are values.
struct Numbers {
    std::atomic<bool> came{false};
    std::vector<int64_t> whole;
    std::vector<double> real;
};

void noteNumbers(void* context, const plcruntime_result* result)
{
    Numbers& numbers = *static_cast<Numbers*>(context);
    const plcruntime_value* value = plcruntime_result_value(result);
    for (std::size_t index = 0; value != nullptr && index <= plcruntime_value_count(value); ++index) {
        numbers.whole.push_back(plcruntime_value_int64(value, index));
        numbers.real.push_back(plcruntime_value_double(value, index));
    }
    numbers.came = true;
}

TEST_F(PlcRuntime, NumbersBehindTheLastAndThoseThatDoNotFitAnIntegerAreZero)
{
    start();
    const uint32_t half[] = {0, 0, 0, 0x8000, 0xFFFF, 0xFFFF, 0xFFFF, 0x7FFF};
    Told written;
    ASSERT_EQ(endOf(plcruntime_write(handle, "9:40x8", half, 8, note, &written), written), 0);
    Numbers numbers;
    ASSERT_EQ(plcruntime_read(handle, "9:40x2", "uint64", noteNumbers, &numbers), PLCRUNTIME_OK);
    ASSERT_TRUE(eventually([&] { return numbers.came.load(); }));
    EXPECT_THAT(numbers.whole, ElementsAre(0, INT64_MAX, 0));
    EXPECT_THAT(numbers.real, ElementsAre(9223372036854775808.0, 9223372036854775807.0, 0));
}

TEST_F(PlcRuntime, AFractionIsCutOffAnInteger)
{
    start();
    EXPECT_EQ(writeNumber("9:40", "float32", -21.75), PLCRUNTIME_NO_FAILURE);
    Numbers numbers;
    ASSERT_EQ(plcruntime_read(handle, "9:40", "float32", noteNumbers, &numbers), PLCRUNTIME_OK);
    ASSERT_TRUE(eventually([&] { return numbers.came.load(); }));
    EXPECT_THAT(numbers.whole, ElementsAre(-21, 0));
}

struct Seen {
    std::mutex mutex;
    std::vector<int> states;
    std::string text;
    int64_t timeMs = -1;
};

void see(void* context, int, const plcruntime_value* value)
{
    Seen& seen = *static_cast<Seen*>(context);
    std::lock_guard<std::mutex> lock(seen.mutex);
    seen.states.push_back(plcruntime_value_state(value));
    seen.text = plcruntime_value_text(value);
    seen.timeMs = plcruntime_value_time_ms(value);
}

TEST_F(PlcRuntime, TellsOfValuesAndTheirStates)
{
    open({{"timeout_ms", "100"}, {"retries", "0"}});
    putIntoController(*controller, 9, 50, 0x41AC, 1);
    putIntoController(*controller, 9, 51, 0x0001, 1);
    Seen seen;
    EXPECT_EQ(plcruntime_subscribe(handle, "9:50", "int32", see, &seen), 0);
    EXPECT_EQ(plcruntime_subscribe(handle, "9:51", nullptr, nullptr, nullptr), 1);
    start();
    const auto isSeen = [&](int state) {
        return eventually([&] {
            std::lock_guard<std::mutex> lock(seen.mutex);
            return !seen.states.empty() && seen.states.back() == state;
        });
    };
    ASSERT_TRUE(isSeen(PLCRUNTIME_FRESH));
    EXPECT_EQ(seen.text, "82348");
    EXPECT_GT(seen.timeMs, 0);
    plcruntime_value* value = nullptr;
    ASSERT_EQ(plcruntime_get(handle, 1, &value), PLCRUNTIME_OK);
    EXPECT_EQ(plcruntime_value_int64(value, 0), 1);
    EXPECT_EQ(plcruntime_value_element(value, 0), 1u);
    EXPECT_EQ(plcruntime_value_element(value, 1), 0u) << "there is none";
    EXPECT_GE(plcruntime_value_age_ms(value), 0);
    plcruntime_free_value(value);
    EXPECT_EQ(plcruntime_is_connected(handle), 1);
    controller->setSilent(1, true);
    EXPECT_TRUE(isSeen(PLCRUNTIME_FAILED));
    EXPECT_EQ(plcruntime_get(handle, 2, &value), PLCRUNTIME_INVALID);
    plcruntime_close(handle); // before what the callback writes to goes
    handle = nullptr;
}

TEST_F(PlcRuntime, StatesOfAValueHaveTheirNumbers)
{
    const auto state = [&] {
        plcruntime_value* value = nullptr;
        EXPECT_EQ(plcruntime_get(handle, 0, &value), PLCRUNTIME_OK);
        const int number = plcruntime_value_state(value);
        plcruntime_free_value(value);
        return number;
    };
    const auto openAndSubscribe = [&](const char* staleAfterMs) {
        open({{"timeout_ms", "60000"}, {"stale_after_ms", staleAfterMs}});
        ASSERT_EQ(plcruntime_subscribe(handle, "9:50", nullptr, nullptr, nullptr), 0);
        start();
    };
    openAndSubscribe("60000");
    ASSERT_TRUE(eventually([&] { return state() == PLCRUNTIME_FRESH; }));
    controller->setSilent(1, true);
    Told told;
    ASSERT_EQ(plcruntime_write_number(handle, "9:50", nullptr, 1, note, &told), PLCRUNTIME_OK);
    EXPECT_EQ(state(), PLCRUNTIME_UNCONFIRMED);
    EXPECT_EQ(plcruntime_switch_station(handle, 1, 0), PLCRUNTIME_OK);
    EXPECT_EQ(state(), PLCRUNTIME_OFF);
    openAndSubscribe("50");
    EXPECT_EQ(state(), PLCRUNTIME_NEVER_READ);
    controller->setSilent(1, false);
    openAndSubscribe("50");
    ASSERT_TRUE(eventually([&] { return state() != PLCRUNTIME_NEVER_READ; }));
    controller->setSilent(1, true);
    EXPECT_TRUE(eventually([&] { return state() == PLCRUNTIME_STALE; }));
}

TEST_F(PlcRuntime, ClosingEndsWhatWaitsBeforeItReturnsAndAnotherOneMayFollow)
{
    open({{"timeout_ms", "60000"}});
    controller->setSilent(1, true);
    start();
    Told inFlight, waiting;
    ASSERT_EQ(plcruntime_write_number(handle, "9:0", nullptr, 1, note, &inFlight), PLCRUNTIME_OK);
    ASSERT_EQ(plcruntime_read(handle, "9:0", nullptr, note, &waiting), PLCRUNTIME_OK);
    ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    EXPECT_EQ(plcruntime_queued(handle, -1, PLCRUNTIME_WRITES), 1);
    ASSERT_EQ(plcruntime_read(handle, "9:1", nullptr, note, &waiting), PLCRUNTIME_OK);
    EXPECT_EQ(plcruntime_queued(handle, 1, PLCRUNTIME_READS), 2);
    EXPECT_EQ(plcruntime_queued(handle, 2, PLCRUNTIME_READS), 0);
    EXPECT_EQ(plcruntime_close(handle), PLCRUNTIME_OK);
    handle = nullptr;
    EXPECT_THAT(inFlight.failures, ElementsAre(PLCRUNTIME_STOPPED));
    EXPECT_THAT(waiting.failures, ElementsAre(PLCRUNTIME_STOPPED, PLCRUNTIME_STOPPED));
    controller->setSilent(1, false);
    open({});
    start();
    EXPECT_EQ(writeNumber("9:1", nullptr, 5), PLCRUNTIME_NO_FAILURE);
    EXPECT_EQ(inController(*controller, 9, 0), 0u);
}

TEST_F(PlcRuntime, StationsAreSwitchedOffAndOn)
{
    open({{"multi_station", "1"}});
    start();
    EXPECT_EQ(plcruntime_switch_station(handle, 3, 0), PLCRUNTIME_OK);
    Told told;
    EXPECT_EQ(endOf(plcruntime_read(handle, "9:0@3", nullptr, note, &told), told), PLCRUNTIME_STATION_OFF);
    EXPECT_EQ(told.words, "station 3 is switched off");
    EXPECT_EQ(plcruntime_switch_station(handle, 3, 1), PLCRUNTIME_OK);
    EXPECT_THAT(numbers("9:0@3", nullptr), ElementsAre(0));
}

/// How a request failed that was answered wrongly.
struct Failed {
    std::atomic<int> failure{-1};
    int exception = -1;
    int unsent = -1;
};

void noteFailure(void* context, const plcruntime_result* result)
{
    Failed& failed = *static_cast<Failed*>(context);
    failed.exception = plcruntime_result_exception(result);
    failed.unsent = plcruntime_result_unsent(result);
    failed.failure = plcruntime_result_failure(result);
}

class PlcRuntimeFailures : public testing::Test
{
protected:
    ~PlcRuntimeFailures() override { plcruntime_close(m_handle); }

    void start(const test::HostileServer::Script& script, const char* timeoutMs = "100")
    {
        m_server = std::make_unique<test::HostileServer>(script);
        const std::string port = std::to_string(m_server->port());
        const plcruntime_option options[] = {{"port", port.c_str()},    {"driver", builtDriver()},
                                             {"timeout_ms", timeoutMs}, {"retries", "0"},
                                             {"multi_station", "1"},    {nullptr, nullptr}};
        ASSERT_EQ(plcruntime_open(options, &m_handle), PLCRUNTIME_OK) << plcruntime_last_error();
        ASSERT_EQ(plcruntime_start(m_handle), PLCRUNTIME_OK) << plcruntime_last_error();
    }

    void write(const char* variable, Failed& failed)
    {
        ASSERT_EQ(plcruntime_write_number(m_handle, variable, nullptr, 1, noteFailure, &failed),
                  PLCRUNTIME_OK);
    }

    static int endOf(const Failed& failed)
    {
        EXPECT_TRUE(eventually([&] { return failed.failure != -1; }));
        return failed.failure;
    }

    void expect(int failure, int exception, const test::HostileServer::Script& script)
    {
        start(script);
        Failed failed;
        write("9:0", failed);
        EXPECT_EQ(endOf(failed), failure);
        EXPECT_EQ(failed.exception, exception);
        EXPECT_EQ(failed.unsent, 0);
        plcruntime_close(m_handle);
        m_handle = nullptr;
    }

    std::unique_ptr<test::HostileServer> m_server;
    plcruntime* m_handle = nullptr;
};

TEST_F(PlcRuntimeFailures, OfAnswersHaveTheirNumbers)
{
    using test::Answer;
    expect(PLCRUNTIME_EXCEPTION, 2,
           [](const QByteArray& request, int) { return Answer{test::exceptionReply(request, 2)}; });
    expect(PLCRUNTIME_ACKNOWLEDGED, 0,
           [](const QByteArray& request, int) { return Answer{test::exceptionReply(request, 5)}; });
    expect(PLCRUNTIME_NO_REPLY, 0, [](const QByteArray&, int) { return Answer{QByteArray()}; });
    expect(PLCRUNTIME_CLOSED, 0, [](const QByteArray&, int) { return Answer{QByteArray(), true}; });
    expect(PLCRUNTIME_BAD_REPLY, 0, [](const QByteArray& request, int) {
        return Answer{test::withByte(test::rightReply(request), 11, 7)}; // another value than that written
    });
}

TEST_F(PlcRuntimeFailures, OfWhatWaitsHaveTheirNumbers)
{
    start([](const QByteArray&, int) { return test::Answer{QByteArray()}; }, "300");
    Failed inFlight, purged, replaced, discarded;
    write("9:0@1", inFlight);
    ASSERT_TRUE(eventually([&] { return m_server->seen().size() == 1; }));
    write("9:5@3", discarded);
    write("9:1@1", replaced);
    write("9:1@1", purged);
    EXPECT_EQ(plcruntime_switch_station(m_handle, 3, 0), PLCRUNTIME_OK);
    EXPECT_EQ(endOf(inFlight), PLCRUNTIME_NO_REPLY);
    EXPECT_EQ(endOf(replaced), PLCRUNTIME_REPLACED);
    EXPECT_EQ(endOf(purged), PLCRUNTIME_PURGED);
    EXPECT_EQ(endOf(discarded), PLCRUNTIME_DISCARDED);
    for (const Failed* unsent : {&replaced, &purged, &discarded})
        EXPECT_EQ(unsent->unsent, 1);
    Failed off;
    write("9:5@3", off);
    EXPECT_EQ(endOf(off), PLCRUNTIME_STATION_OFF);
}

TEST_F(PlcRuntimeFailures, WithoutAControllerIsNotConnected)
{
    start(nullptr);
    plcruntime_close(m_handle);
    m_handle = nullptr;
    const std::string port = std::to_string(m_server->port());
    m_server.reset();
    const plcruntime_option options[] = {{"port", port.c_str()},
                                         {"driver", builtDriver()},
                                         {"timeout_ms", "50"},
                                         {"retries", "0"},
                                         {nullptr, nullptr}};
    ASSERT_EQ(plcruntime_open(options, &m_handle), PLCRUNTIME_OK);
    ASSERT_EQ(plcruntime_start(m_handle), PLCRUNTIME_OK);
    Failed failed;
    write("9:0", failed);
    EXPECT_EQ(endOf(failed), PLCRUNTIME_NOT_CONNECTED);
    EXPECT_EQ(plcruntime_is_connected(m_handle), 0);
}

TEST(PlcRuntimeNames, AreThereForEveryNumber)
{
    for (int number = -1; number < 300; ++number) {
        EXPECT_STRNE(plcruntime_failure_name(number), "") << number;
        EXPECT_STRNE(plcruntime_state_name(number), "") << number;
    }
    const char* const failures[] = {
        "none",        "refused",      "not running",   "not tried", "station off", "not taken", "discarded",
        "replaced",    "purged",       "not connected", "no reply",  "exception",   "bad reply", "stopped",
        "out of step", "not reported", "acknowledged",  "closed",    "other"};
    for (int number = 0; number <= 18; ++number)
        EXPECT_STREQ(plcruntime_failure_name(number), failures[number]);
    EXPECT_STREQ(plcruntime_failure_name(-1), "other");
    EXPECT_STREQ(plcruntime_failure_name(PLCRUNTIME_CLOSED), "closed");
    EXPECT_STREQ(plcruntime_failure_name(PLCRUNTIME_NOT_REPORTED), "not reported");
    for (int number = PLCRUNTIME_NEVER_READ; number <= PLCRUNTIME_FRESH; ++number)
        EXPECT_EQ(plcruntime_state_name(number),
                  plc::valueStateWord(static_cast<plc::ValueState>(number)).toStdString());
    EXPECT_STREQ(plcruntime_state_name(PLCRUNTIME_FRESH), "fresh");
    EXPECT_STREQ(plcruntime_state_name(PLCRUNTIME_FRESH + 1), "unknown");
}

} // namespace
