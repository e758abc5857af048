// SPDX-License-Identifier: MIT
/// \file
/// \brief Whether the memory of this process grows while it works.
#ifndef SOAK_MEMORY_WATCH_H
#define SOAK_MEMORY_WATCH_H

#include <QString>

#include <vector>

namespace soak
{

struct MemoryUse {
    long heapBytes = 0;     ///< handed out by malloc() and not freed; 0 where that cannot be known
    long residentBytes = 0; ///< of the process
};

/// \return what this process uses now
MemoryUse memoryUse();

/// Compares the middle value of the second tenth of a run with that of its last tenth: single values go up
/// and down with the requests that just wait. For one thread.
class MemoryWatch
{
public:
    // A leak of four bytes in each of 20,000 requests is more than this. The caches that malloc() keeps for
    // each thread count as in use and fill slowly, by some 30 KiB, unless they are switched off.
    static constexpr long heapTolerance = 64 * 1024;
    // Also grows by holes.
    static constexpr long residentTolerance = 4096 * 1024;

    /// \param samples how many there will be; their memory is taken now
    explicit MemoryWatch(std::size_t samples) { m_samples.reserve(samples); }

    void sample(const MemoryUse& use);

    /// \return false when there are too few samples to say anything
    bool hasSeenEnough() const;

    MemoryUse afterFirstTenth() const;
    MemoryUse atEnd() const;

    /// \return what has grown beyond its tolerance; empty when nothing has
    QString complaint() const;

private:
    MemoryUse middle(std::size_t from, std::size_t to) const;

    std::vector<MemoryUse> m_samples;
};

} // namespace soak

#endif
