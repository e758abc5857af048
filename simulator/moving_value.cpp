// SPDX-License-Identifier: MIT
#include "simulator/moving_value.h"

#include <cmath>

namespace simulator
{

namespace
{

int elementsOf(const MovingValue& value)
{
    return value.width == MovingValue::DoubleWord ? 2 : 1;
}

// Spreads neighbouring numbers over all 64 bits; the constants are those of SplitMix64.
std::uint64_t scattered(std::uint64_t number)
{
    number += 0x9E3779B97F4A7C15;
    number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
    number = (number ^ number >> 27) * 0x94D049BB133111EB;
    return number ^ number >> 31;
}

std::int64_t ramp(const MovingValue& value, std::int64_t steps, std::int64_t phaseMs)
{
    return value.lowest +
           static_cast<std::int64_t>(static_cast<double>(steps) * static_cast<double>(phaseMs) /
                                     static_cast<double>(value.periodMs));
}

std::int64_t sine(const MovingValue& value, std::int64_t phaseMs)
{
    const double turn =
        2 * std::acos(-1.0) * static_cast<double>(phaseMs) / static_cast<double>(value.periodMs);
    const double middle = static_cast<double>(value.lowest + value.highest) / 2;
    const double swing = static_cast<double>(value.highest - value.lowest) / 2;
    return std::llround(middle + swing * std::sin(turn));
}

std::int64_t random(const MovingValue& value, std::int64_t steps, std::int64_t period, std::uint64_t seed)
{
    const std::uint64_t number = scattered(scattered(seed) + static_cast<std::uint64_t>(period));
    return value.lowest + static_cast<std::int64_t>(number % static_cast<std::uint64_t>(steps));
}

} // namespace

std::int64_t valueAt(const MovingValue& value, std::int64_t ms, std::uint64_t seed)
{
    const std::int64_t steps = value.highest - value.lowest + 1;
    const std::int64_t period = ms / value.periodMs;
    switch (value.motion) {
    case MovingValue::Ramp:
        return ramp(value, steps, ms % value.periodMs);
    case MovingValue::Sine:
        return sine(value, ms % value.periodMs);
    case MovingValue::Counter:
        return value.lowest + period % steps;
    case MovingValue::Random:
        return random(value, steps, period, seed);
    }
    return value.lowest;
}

void MovingValues::put(int address, const MovingValue& value)
{
    remove(address, elementsOf(value));
    m_values.emplace(address, value);
}

void MovingValues::remove(int first, int count)
{
    auto at = firstBehind(first);
    while (at != m_values.end() && at->first < first + count)
        at = m_values.erase(at);
}

// A double word one address before reaches into it.
MovingValues::Map::const_iterator MovingValues::firstBehind(int address) const
{
    const auto before = m_values.find(address - 1);
    return before != m_values.end() && elementsOf(before->second) == 2 ? before
                                                                       : m_values.lower_bound(address);
}

} // namespace simulator
