// SPDX-License-Identifier: MIT
#include "soak/memory_watch.h"

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <unistd.h>

namespace soak
{

namespace
{

const std::size_t fewestSamples = 50;

long residentPages()
{
    long all = 0;
    long resident = 0;
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr)
        return 0;
    const bool isThere = std::fscanf(file, "%ld %ld", &all, &resident) == 2;
    std::fclose(file);
    return isThere ? resident : 0;
}

long middleOf(const std::vector<MemoryUse>& samples, long MemoryUse::*part)
{
    std::vector<long> sorted;
    for (const MemoryUse& sample : samples)
        sorted.push_back(sample.*part);
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
}

QString grown(const char* what, long before, long after, long tolerance)
{
    if (after - before <= tolerance)
        return QString();
    return QStringLiteral("%1 has grown from %2 to %3 KiB after the first tenth of the run")
        .arg(QLatin1String(what))
        .arg(before / 1024)
        .arg(after / 1024);
}

} // namespace

MemoryUse memoryUse()
{
    const auto heap = mallinfo2();
    MemoryUse use;
    use.heapBytes = static_cast<long>(heap.uordblks + heap.hblkhd);
    use.residentBytes = residentPages() * sysconf(_SC_PAGESIZE);
    return use;
}

void MemoryWatch::sample(const MemoryUse& use)
{
    if (m_samples.size() < m_samples.capacity())
        m_samples.push_back(use);
}

bool MemoryWatch::hasSeenEnough() const
{
    return m_samples.size() >= fewestSamples;
}

MemoryUse MemoryWatch::middle(std::size_t from, std::size_t to) const
{
    const auto first = m_samples.begin();
    const std::vector<MemoryUse> samples(first + static_cast<std::ptrdiff_t>(from),
                                         first + static_cast<std::ptrdiff_t>(to));
    return {middleOf(samples, &MemoryUse::heapBytes), middleOf(samples, &MemoryUse::residentBytes)};
}

MemoryUse MemoryWatch::afterFirstTenth() const
{
    return middle(m_samples.size() / 10, m_samples.size() / 5);
}

MemoryUse MemoryWatch::atEnd() const
{
    return middle(m_samples.size() - m_samples.size() / 10, m_samples.size());
}

QString MemoryWatch::complaint() const
{
    const MemoryUse before = afterFirstTenth();
    const MemoryUse after = atEnd();
    const QString heap = grown("memory in use", before.heapBytes, after.heapBytes, heapTolerance);
    return heap.isEmpty()
               ? grown("resident memory", before.residentBytes, after.residentBytes, residentTolerance)
               : heap;
}

} // namespace soak
