// SPDX-License-Identifier: MIT
#include "runtime/cycle/pass_counter.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

const std::size_t countedPasses = 10;

// A pass that takes longer than so many is late.
const int latePasses = 3;

} // namespace

void PassCounter::request(int area, int elements, int unused)
{
    ++m_running.requests;
    if (kindOf(area) == ElementKind::Bit) {
        m_running.bits += elements;
        m_running.bitsUnused += unused;
        return;
    }
    const int registers = placesOfElement(area);
    m_running.registers += elements * registers;
    m_running.registersUnused += unused * registers;
}

void PassCounter::endPass(qint64 microseconds)
{
    m_last = m_running;
    m_running = PassCost();
    m_ends.push_back(microseconds);
    if (m_ends.size() > countedPasses + 1)
        m_ends.pop_front();
}

double PassCounter::perSecond(qint64 microseconds) const
{
    if (m_ends.size() < 2)
        return 0.0;
    const auto passes = static_cast<qint64>(m_ends.size() - 1);
    const qint64 known = m_ends.back() - m_ends.front();
    const bool isLate = microseconds - m_ends.back() > latePasses * known / passes;
    const qint64 span = isLate ? microseconds - m_ends.front() : known;
    return span > 0 ? static_cast<double>(passes) * 1e6 / static_cast<double>(span) : 0.0;
}

} // namespace plc
