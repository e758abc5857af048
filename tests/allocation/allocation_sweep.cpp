// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

#include "driver_state.h"

#include <algorithm>
#include <regex>
#include <set>
#include <sstream>

namespace
{

const int CALLBACKS = 100;         // room for their records, so that recording needs no memory
const int MOST_ALLOCATIONS = 5000; // of one call; more means that a sweep does not end

std::string State(const Situation& situation)
{
    return DescribeDriver() + (situation.caller ? situation.caller() : std::string());
}

// The lines of a state that a predicate keeps.
template <typename Keep>
std::string Lines(const std::string& state, Keep keep)
{
    std::istringstream in(state);
    std::string kept;
    for (std::string line; std::getline(in, line);)
        if (keep(line))
            kept += line + "\n";
    return kept;
}

bool StartsWith(const std::string& line, const std::string& start)
{
    return line.compare(0, start.size(), start) == 0;
}

bool IsMemory(const std::string& line)
{
    return StartsWith(line, "bits") || StartsWith(line, "words") || StartsWith(line, "double words") ||
           StartsWith(line, "station");
}

std::set<std::string> MemoryLines(const std::string& state)
{
    std::set<std::string> lines;
    Lines(state, [&lines](const std::string& line) { return IsMemory(line) && lines.insert(line).second; });
    return lines;
}

// Whether nothing but the driver's memory changed, and each value there is the one from before or from after.
bool OnlyFinishedElements(const std::string& state, const std::string& before, const std::string& after)
{
    const auto notMemory = [](const std::string& line) { return !IsMemory(line); };
    std::set<std::string> allowed = MemoryLines(before);
    allowed.merge(MemoryLines(after));
    const std::set<std::string> lines = MemoryLines(state);
    return Lines(state, notMemory) == Lines(before, notMemory) &&
           std::includes(allowed.begin(), allowed.end(), lines.begin(), lines.end());
}

bool Acceptable(Leaves leaves, const std::string& state, const std::string& before, const std::string& after)
{
    switch (leaves) {
    case Leaves::ALL_OR_NOTHING:
        break;
    case Leaves::REFUSED_LIST:
        return state == Lines(before, [](const std::string& line) { return !StartsWith(line, "cyclic"); });
    case Leaves::FINISHED_ELEMENTS:
    case Leaves::FIRST_PIECES:
        return OnlyFinishedElements(state, before, after);
    }
    return state == before;
}

bool Acceptable(const Situation& situation, const std::string& state, const std::string& before,
                const std::string& after)
{
    if (situation.ignored.empty())
        return Acceptable(situation.leaves, state, before, after);
    const std::regex ignored(situation.ignored);
    const auto without = [&ignored](const std::string& text) {
        return std::regex_replace(text, ignored, "");
    };
    return Acceptable(situation.leaves, without(state), without(before), without(after));
}

// Whether everything that waits to be written in one state does so in the other too.
bool HoldsWritesOf(const std::string& state, const std::string& other)
{
    const auto isWrite = [](const std::string& line) { return StartsWith(line, "write"); };
    std::istringstream writes(Lines(other, isWrite));
    for (std::string line; std::getline(writes, line);)
        if (state.find(line + "\n") == std::string::npos)
            return false;
    return true;
}

void ExpectFree(QMutex& mutex, const char* name)
{
    ASSERT_TRUE(mutex.tryLock()) << name << " is still locked";
    mutex.unlock();
}

} // namespace

void AllocationSweep::SetUp()
{
    CycleTest::SetUp();
    onceReadDoneCalls().reserve(CALLBACKS);
    listDoneCalls().reserve(CALLBACKS);
}

std::string AllocationSweep::story()
{
    std::ostringstream out;
    const int requests =
        PLC_driver.readList.size() + 2 * PLC_driver.writeList.size() + PLC_driver.onceReadList.size();
    for (int turn = 0; turn < requests + 3; ++turn) {
        const Protocol* next = ComCommunication();
        out << (next ? toHex(next->frame) : std::string("nothing")) << "\n";
        if (!next)
            continue;
        QByteArray reply(next->replyLength, static_cast<char>(0x20 + turn));
        out << "result " << DataCom(&reply, reply.size())->result << "\n";
    }
    for (const OnceReadDoneCall& call : onceReadDoneCalls())
        out << call << "\n";
    return out.str() + DescribeDriver();
}

AllocationSweep::Reference AllocationSweep::reference(const Situation& situation)
{
    SCOPED_TRACE("without a failure"); // also lets everybody get what they keep for good
    Reference expected;
    for (const auto& call : situation.shorter) {
        SetUp();
        situation.prepare();
        call();
        expected.between.push_back(State(situation));
    }
    SetUp();
    situation.prepare();
    expected.before = State(situation);
    AllocationWatch watch;
    expected.result = situation.call();
    expected.after = State(situation);
    if (situation.leaves == Leaves::FIRST_PIECES) // the last piece is queued before it is mirrored
        expected.between.push_back(expected.after);
    expected.story = story();
    Acceptable(situation, expected.before, expected.before, expected.after);
    return expected;
}

// The call is made once more, now that there is memory.
void AllocationSweep::again(const Situation& situation, const Reference& expected)
{
    SCOPED_TRACE("with memory again");
    const int result = situation.call();
    if (situation.leaves == Leaves::FIRST_PIECES) {
        EXPECT_GE(result, expected.result);
        EXPECT_TRUE(HoldsWritesOf(State(situation), expected.after)) << State(situation);
        return;
    }
    EXPECT_EQ(expected.result, result);
    EXPECT_EQ(expected.after, State(situation));
    EXPECT_EQ(expected.story, story());
}

// \return whether an allocation failed
bool AllocationSweep::round(const Situation& situation, const Reference& expected, int nth, Failing which)
{
    SCOPED_TRACE("allocation " + std::to_string(nth) + (which == Failing::ONE ? "" : " and all later ones"));
    situation.prepare();
    int result = 0;
    {
        AllocationWatch watch(nth, which);
        EXPECT_NO_THROW(result = situation.call());
    }
    const bool failed = AllocationWatch::failed();
    ExpectFree(PLC_driver.listMutex, "listMutex");
    ExpectFree(PLC_driver.imageMutex, "imageMutex");
    ExpectFree(PLC_driver.stationMutex, "stationMutex");

    const std::string state = State(situation);
    const bool served = state == expected.after && result == expected.result;
    if (!served) {
        EXPECT_TRUE(failed);
        EXPECT_EQ(situation.refused, result);
        bool acceptable = Acceptable(situation, state, expected.before, expected.after);
        for (const std::string& between : expected.between)
            acceptable = acceptable || Acceptable(situation, state, between, expected.after);
        EXPECT_TRUE(acceptable) << state << "\ncame from\n" << expected.before;
        again(situation, expected);
        return failed;
    }
    EXPECT_EQ(expected.story, story()) << "afterwards";
    return failed;
}

void AllocationSweep::rounds(const Situation& situation, const Reference& expected, Failing which)
{
    bool failed = true;
    int nth = 0;
    while (failed && !HasFailure() && nth < MOST_ALLOCATIONS) {
        SetUp();
        const long living = AllocationWatch::livingBlocks();
        failed = round(situation, expected, ++nth, which);
        SetUp();
        const long leaked = HasFailure() ? 0 : AllocationWatch::livingBlocks() - living; // failures keep text
        EXPECT_EQ(0, leaked) << "blocks when allocation " << nth << " failed";
    }
    if (HasFailure())
        return;
    const bool fails = situation.needs == Needs::NODES ||
                       (situation.needs == Needs::MALLOC_ONLY && AllocationWatch::coversMalloc());
    EXPECT_EQ(fails, nth > 1) << "whether the call needs memory";
    EXPECT_FALSE(failed) << "the sweep does not end";
}

void AllocationSweep::sweep(const Situation& situation)
{
    SetUp();
    const Reference expected = reference(situation);
    rounds(situation, expected, Failing::ONE);
    rounds(situation, expected, Failing::ONE_AND_ALL_LATER);
}
