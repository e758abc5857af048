// SPDX-License-Identifier: MIT
/// \file
/// \brief Runs one call again and again, each time with another allocation failing, until none is left to
/// fail.
#ifndef TESTS_ALLOCATION_ALLOCATION_SWEEP_H
#define TESTS_ALLOCATION_ALLOCATION_SWEEP_H

#include "allocation/failing_allocation.h"
#include "driver/cycle.h"

#include <functional>
#include <string>
#include <vector>

/// What a failed call may leave behind.
enum class Leaves {
    ALL_OR_NOTHING,    ///< the state from before and the result of a refusal, or the state and the result of
                       ///< success
    REFUSED_LIST,      ///< as above, but nothing queued for cyclic reading instead of the state from before
    FINISHED_ELEMENTS, ///< as above, but single values may have arrived in the driver's memory
    FIRST_PIECES       ///< as above, and what a call for fewer pieces leaves (Situation::shorter)
};

/// What kind of memory a call needs.
enum class Needs {
    NODES,       ///< from operator new too
    MALLOC_ONLY, ///< so there is nothing to fail where malloc is not replaced
    NONE         ///< it must work without
};

/// One entry point in one situation. A clean driver is prepared, then the call is made; both are repeated.
struct Situation {
    std::function<void()> prepare;
    std::function<int()> call;                ///< the call under test, and its result as a number
    int refused = 0;                          ///< that number where the call could not be served
    std::function<std::string()> caller = {}; ///< the caller's own records, part of the state
    Leaves leaves = Leaves::ALL_OR_NOTHING;
    Needs needs = Needs::NODES;
    std::vector<std::function<void()>> shorter = {}; ///< the same call for fewer pieces, the fewest first
    std::string ignored = {}; ///< a regular expression: what may differ from the state before all the same
};

/// Every test here shows of its situation, for every allocation that can fail, alone and with all later ones:
/// no exception leaves the call, no lock is kept, the state is as Leaves says and agrees with the result,
/// nothing leaks, and once there is memory again the same call and the whole request cycle after it go as if
/// nothing had happened. A write of which the first pieces stay may send its very first one twice.
class AllocationSweep : public CycleTest
{
protected:
    void SetUp() override;

    /// Fails every allocation of the call in turn.
    void sweep(const Situation& situation);

    /// Turns of the request cycle with good replies until the queues are empty and the cyclic reads were
    /// read. \return the frames, results and callbacks
    static std::string story();

private:
    struct Reference {
        std::string before;
        std::vector<std::string> between; // what fewer pieces leave
        std::string after;
        int result;
        std::string story;
    };

    Reference reference(const Situation& situation);
    static void again(const Situation& situation, const Reference& expected);
    bool round(const Situation& situation, const Reference& expected, int nth, Failing which);
    void rounds(const Situation& situation, const Reference& expected, Failing which);
};

#endif
