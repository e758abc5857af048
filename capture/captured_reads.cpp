// SPDX-License-Identifier: MIT
#include "capture/captured_reads.h"

#include <algorithm>

namespace plc
{

namespace
{

const std::size_t mostReads = 10000;

} // namespace

CapturedReads::CapturedReads(FrameFormat format)
    : m_dialect(dialectOf(format)), m_rebuilder(requestRebuilderFor(format, {}, {}))
{
}

void CapturedReads::add(const CaptureEntry& entry)
{
    m_firstTime = m_entries == 0 ? entry.microseconds : std::min(m_firstTime, entry.microseconds);
    m_lastTime = std::max(m_lastTime, entry.microseconds);
    ++m_entries;
    const bool isRequest = entry.kind == CaptureEntry::Request || entry.kind == CaptureEntry::NotSent;
    if (!isRequest || m_known.size() >= mostReads)
        return;
    if (!m_known.insert(m_dialect.withoutNumber(entry.bytes)).second)
        return;
    const auto rebuilt = m_rebuilder->rebuild(entry.bytes);
    if (!rebuilt || rebuilt->isWrite)
        return;
    const Variable read = elementsOf({rebuilt->request, {}, 0});
    if (read.element < 0 || read.count < 1 || endOf(read) > areaSize(read.area))
        return;
    m_stations.insert(read.station);
    m_reads.insert({read.station, read.area, read.element, read.count});
}

std::vector<Variable> CapturedReads::variables() const
{
    std::vector<Variable> variables;
    for (const auto& read : m_reads) {
        Variable variable;
        std::tie(variable.station, variable.area, variable.element, variable.count) = read;
        variables.push_back(variable);
    }
    return variables;
}

} // namespace plc
