// SPDX-License-Identifier: MIT
/// \file
/// \brief Values that move by themselves: what they are at a time, and which of a unit's elements they are.
#ifndef SIMULATOR_MOVING_VALUE_H
#define SIMULATOR_MOVING_VALUE_H

#include <cstdint>
#include <map>

namespace simulator
{

struct MovingValue {
    enum Motion {
        Ramp,    ///< rises evenly from the lowest to the highest value within a period, then begins anew
        Sine,    ///< swings between both, a period for a whole swing; begins in the middle, rising
        Counter, ///< one more every period, behind the highest comes the lowest
        Random   ///< another one every period, all as likely
    };
    enum Width { Bit = 1, Word = 16, DoubleWord = 32 }; ///< a double word: two registers, the low half first

    Motion motion;
    Width width;
    std::int64_t lowest; ///< negative ones are stored as two's complement
    std::int64_t highest;
    std::int64_t periodMs; ///< at least 1
};

/// What `value` is so many milliseconds after the start. Random values depend on `seed` and on nothing else.
std::int64_t valueAt(const MovingValue& value, std::int64_t ms, std::uint64_t seed);

/// The moving values of one kind and one unit, by address. They do not overlap: the one that was put last stays.
class MovingValues
{
public:
    bool isEmpty() const { return m_values.empty(); }
    void put(int address, const MovingValue& value);

    /// Forgets those that have one of `count` elements from `first` on.
    void remove(int first, int count);

    /// Calls work(address, value) for those that have one of `count` elements from `first` on.
    template <class Work>
    void visit(int first, int count, const Work& work) const
    {
        for (auto at = firstBehind(first); at != m_values.end() && at->first < first + count; ++at)
            work(at->first, at->second);
    }

private:
    using Map = std::map<int, MovingValue>;

    Map::const_iterator firstBehind(int address) const;

    Map m_values;
};

} // namespace simulator

#endif
