// SPDX-License-Identifier: MIT
#include "soak/memory_watch.h"

#include <gtest/gtest.h>

namespace
{

using namespace soak;

const int samples = 100;
const long kib = 1024;

/// A run whose memory grows by so many bytes from sample to sample.
MemoryWatch runThatGrows(long perSample)
{
    MemoryWatch watch(samples);
    for (int sample = 0; sample < samples; ++sample) {
        const long grown = sample * perSample;
        watch.sample({1000 * kib + grown, 9000 * kib + grown});
    }
    return watch;
}

TEST(MemoryWatch, DoesNotMindWhatIsTakenInTheFirstTenth)
{
    MemoryWatch watch(samples);
    for (int sample = 0; sample < samples; ++sample)
        watch.sample({sample < 10 ? 0 : 9000 * kib, sample < 10 ? 0 : 9000 * kib});
    EXPECT_TRUE(watch.hasSeenEnough());
    EXPECT_EQ(watch.complaint(), QString());
}

TEST(MemoryWatch, ComplainsOfALeakBeyondTheTolerance)
{
    // 80 samples lie between the middles of the second and the last tenth.
    EXPECT_EQ(runThatGrows(800).complaint(), QString());
    EXPECT_FALSE(runThatGrows(900).complaint().isEmpty());
}

TEST(MemoryWatch, DoesNotMindASinglePeak)
{
    MemoryWatch watch(samples);
    for (int sample = 0; sample < samples; ++sample)
        watch.sample({sample == 95 ? 9000 * kib : 1000 * kib, 9000 * kib});
    EXPECT_EQ(watch.complaint(), QString());
}

TEST(MemoryWatch, SaysWhatThisProcessUses)
{
    EXPECT_GT(memoryUse().residentBytes, 0);
}

} // namespace
