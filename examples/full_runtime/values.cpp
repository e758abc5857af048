// SPDX-License-Identifier: MIT
#include "values.h"

#include <algorithm>

namespace
{

const std::chrono::seconds freshFor(2);

} // namespace

const char* nameOf(State state)
{
    static const char* const names[] = {"never read", "fresh", "stale", "unconfirmed"};
    return names[static_cast<int>(state)];
}

void Values::read(const RW_VAR& request)
{
    for (int i = 0; i < request.count; ++i) {
        Element& element = m_elements[{request.station, request.address + i}];
        element.everRead = true;
        element.readSinceWritten = element.writes == 0;
        element.lastRead = Clock::now();
    }
}

void Values::writeQueued(const RW_VAR& write)
{
    for (int i = 0; i < write.count; ++i)
        ++m_elements[{write.station, write.address + i}].writes;
}

void Values::writeEnded(const RW_VAR& write)
{
    for (int i = 0; i < write.count; ++i) {
        Element& element = m_elements[{write.station, write.address + i}];
        --element.writes;
        element.readSinceWritten = false;
    }
}

State Values::stateOf(const Element& element)
{
    if (element.writes != 0 || !element.readSinceWritten)
        return State::Unconfirmed;
    if (!element.everRead)
        return State::NeverRead;
    return Clock::now() - element.lastRead < freshFor ? State::Fresh : State::Stale;
}

State Values::state(int station, int address, int count) const
{
    for (int i = 0; i < count; ++i) {
        const auto found = m_elements.find({station, address + i});
        const State one = found == m_elements.end() ? State::NeverRead : stateOf(found->second);
        if (one != State::Fresh)
            return one;
    }
    return State::Fresh;
}
