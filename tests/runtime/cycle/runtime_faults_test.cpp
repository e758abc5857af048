// SPDX-License-Identifier: MIT
// Whatever a controller does to its replies: no wrong value is shown or filed, every write ends, and what
// was confirmed is in the controller.
#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

#include <set>

namespace
{

using namespace plc;

// Never written, so only one value is right. Twins of each area differ in their values only: a reply that is
// taken for the other's has the right length.
const int constantElement = 900;
const int twinElement = 1100;
const int constants = 20;
const int writtenElement = 2000;

const struct {
    int area;
    int element;
} constantRuns[] = {
    {2, constantElement}, {2, twinElement},      {9, constantElement},
    {9, twinElement},     {14, constantElement}, {14, twinElement},
};

quint32 constantValue(int area, int element)
{
    if (area == 2)
        return static_cast<quint32>(element < twinElement ? element % 2 : 1 - element % 2);
    return static_cast<quint32>(0x4000 + area * 1000 + element);
}

std::vector<quint32> constantValues(int area, int element)
{
    std::vector<quint32> values;
    for (int index = 0; index < constants; ++index)
        values.push_back(constantValue(area, element + index));
    return values;
}

struct Case {
    std::string name;
    double simulator::FaultSettings::*probability;
    bool multiStation;
    bool remote;
};

std::vector<Case> everyFault()
{
    std::vector<Case> cases;
    for (const simulator::FaultKind& kind : simulator::faultList()) {
        std::string name;
        for (const char* letter = kind.name; *letter != '\0'; ++letter)
            name += *letter == '-' ? '_' : *letter;
        cases.push_back({name, kind.probability, false, false});
        cases.push_back({name + "_several_stations", kind.probability, true, false});
        cases.push_back({name + "_remote", kind.probability, false, true});
        cases.push_back({name + "_remote_several_stations", kind.probability, true, true});
    }
    return cases;
}

class RuntimeFaults : public RuntimeFixture, public testing::WithParamInterface<Case>
{
protected:
    RuntimeFaults()
    {
        if (GetParam().remote)
            useRemoteController();
        settings.timeoutMs = 30;
        settings.retryLimit = 2;
        settings.multiStation = GetParam().multiStation;
        makeRuntime();
        for (const auto& run : constantRuns) {
            for (int element = run.element; element < run.element + constants; ++element)
                putIntoController(*controller, run.area, element, constantValue(run.area, element));
            m_constants.push_back(runtime->addCyclic(variable(run.area, run.element, constants)));
        }
        m_written = runtime->addCyclic(variable(9, writtenElement));
        runtime->start();
    }

    /// \param probability of the fault at hand
    void useFault(double probability)
    {
        simulator::FaultSettings faults;
        faults.*GetParam().probability = probability;
        faults.lateMs = 50;
        controller->setFaults(faults);
    }

    /// Each write may or may not be carried out if it fails, but a confirmed one was.
    void writeOne(quint32 value)
    {
        const WriteOutcome outcome = write(variable(9, writtenElement), {value});
        if (outcome.confirmed)
            m_possible.clear();
        m_possible.insert(value);
        EXPECT_NE(outcome.confirmed, hasFailed(outcome.failure));
        EXPECT_EQ(m_possible.count(inController(*controller, 9, writtenElement)), 1u)
            << inController(*controller, 9, writtenElement) << " after " << value << ' ' << reasonOf(outcome);
    }

    void writeBits(int turn)
    {
        for (const int area : {1, 8}) {
            const quint32 value = static_cast<quint32>(turn / 2 % 2);
            if (write(variable(area, 320 + turn), {value}).confirmed) {
                EXPECT_EQ(inController(*controller, area, 320 + turn), value) << area << ' ' << turn;
            }
        }
    }

    void lookAtValues()
    {
        for (std::size_t index = 0; index < m_constants.size(); ++index) {
            const CyclicValue value = runtime->value(m_constants[index]);
            const auto& run = constantRuns[index];
            if (value.state != ValueState::NeverRead) {
                EXPECT_EQ(value.values, constantValues(run.area, run.element)) << run.area;
            }
        }
        const CyclicValue value = runtime->value(m_written);
        if (value.state == ValueState::Fresh) {
            EXPECT_EQ(m_possible.count(value.values.at(0)), 1u) << value.values.at(0);
        }
    }

    void readOne(int area, int element)
    {
        const ReadOutcome outcome = read(variable(area, element, constants));
        if (outcome.done) {
            EXPECT_EQ(outcome.values, constantValues(area, element)) << area;
        } else {
            EXPECT_TRUE(hasFailed(outcome.failure));
        }
    }

    void workForAWhile(int turns)
    {
        for (int turn = 0; turn < turns; ++turn) {
            writeOne(m_nextValue++);
            writeBits(turn);
            readOne(turn % 2 == 0 ? 9 : 14, constantElement);
            readOne(turn % 2 == 0 ? 9 : 14, twinElement);
            readOne(2, turn % 2 == 0 ? twinElement : constantElement);
            lookAtValues();
        }
    }

    std::vector<int> m_constants;
    int m_written = 0;
    quint32 m_nextValue = 1;
    std::set<quint32> m_possible = {0};
};

TEST_P(RuntimeFaults, NothingWrongIsShownOrConfirmed)
{
    useFault(0.3);
    workForAWhile(7);
    useFault(0);
    EXPECT_TRUE(eventually([&] { return write(variable(9, writtenElement), {60000}).confirmed; }));
    EXPECT_EQ(inController(*controller, 9, writtenElement), 60000u);
    for (const int index : m_constants)
        EXPECT_TRUE(becomes(index, ValueState::Fresh));
    m_possible = {60000};
    ASSERT_TRUE(becomes(m_written, ValueState::Fresh));
    lookAtValues();
    const Statistics statistics = runtime->statistics();
    EXPECT_EQ(statistics.writesWaiting, 0);
}

INSTANTIATE_TEST_SUITE_P(Each, RuntimeFaults, testing::ValuesIn(everyFault()),
                         [](const auto& fault) { return fault.param.name; });

/// The panel must notice the faults, or the tests above would pass without any.
class RuntimeCounts : public RuntimeFixture
{
protected:
    bool seenAfterReads(double simulator::FaultSettings::*probability,
                        const std::function<bool(const LinkState&)>& seen)
    {
        simulator::FaultSettings faults;
        faults.*probability = 0.5;
        faults.lateMs = 50;
        controller->setFaults(faults);
        settings.timeoutMs = 30;
        startRuntime();
        return eventually([&] {
            read(variable(9, 0));
            return seen(runtime->linkState());
        });
    }
};

TEST_F(RuntimeCounts, LateReplies)
{
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::late,
                               [](const LinkState& state) { return state.dropped.late > 2; }));
}

TEST_F(RuntimeCounts, DoubledReplies)
{
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::doubled,
                               [](const LinkState& state) { return state.dropped.doubled > 2; }));
}

TEST_F(RuntimeCounts, RepliesOfTheWrongUnit)
{
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::wrongUnit,
                               [](const LinkState& state) { return state.dropped.wrongUnit > 2; }));
}

TEST_F(RuntimeCounts, StreamsThatAreOutOfStep)
{
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::cut,
                               [](const LinkState& state) { return state.untrusted > 2; }));
}

TEST_F(RuntimeCounts, ConnectionsThatWereClosed)
{
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::close,
                               [](const LinkState& state) { return state.connects > 3; }));
}

TEST_F(RuntimeCounts, RemoteConnectionsThatALateReplyCouldStillComeOn)
{
    useRemoteController();
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::late,
                               [](const LinkState& state) { return state.untrusted > 2; }));
}

TEST_F(RuntimeCounts, RemoteRepliesThatCameTwice)
{
    useRemoteController();
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::doubled, [](const LinkState& state) {
        return state.dropped.doubled > 2 && state.untrusted > 2;
    }));
}

TEST_F(RuntimeCounts, RemoteRepliesOfTheWrongStationOrSize)
{
    useRemoteController();
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::wrongUnit,
                               [](const LinkState& state) { return state.dropped.wrongUnit > 2; }));
    runtime.reset();
    EXPECT_TRUE(seenAfterReads(&simulator::FaultSettings::longer,
                               [](const LinkState& state) { return state.dropped.wrongPlace > 2; }));
}

} // namespace
