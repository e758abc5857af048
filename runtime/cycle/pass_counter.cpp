#include "runtime/cycle/pass_counter.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

const std::size_t countedPasses = 10;

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

double PassCounter::perSecond() const
{
    if (m_ends.size() < 2)
        return 0.0;
    const qint64 span = m_ends.back() - m_ends.front();
    return span > 0 ? static_cast<double>(m_ends.size() - 1) * 1e6 / static_cast<double>(span) : 0.0;
}

} // namespace plc
