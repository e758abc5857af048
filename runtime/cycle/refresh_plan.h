// SPDX-License-Identifier: MIT
/// \file
/// \brief What the driver is asked to refresh so that the variables of a list are.
#ifndef RUNTIME_CYCLE_REFRESH_PLAN_H
#define RUNTIME_CYCLE_REFRESH_PLAN_H

#include "runtime/modbus/request_pieces.h"

#include <cstddef>
#include <vector>

namespace plc
{

/// Elements that are read for a variable, of the station and area that wordsOf() it has.
struct PlannedPart {
    int element;
    int count;
};

/// The parts of each variable, by their elements. A list may have a million variables, most of them with one part.
class PlannedParts
{
public:
    void reserve(std::size_t variables);

    /// The parts of the next variable.
    void add(const std::vector<PlannedPart>& parts);

    std::size_t variables() const { return m_ends.size(); }
    std::size_t size() const { return m_parts.size(); }
    const PlannedPart* begin(std::size_t variable) const
    {
        return m_parts.data() + (variable == 0 ? 0 : m_ends[variable - 1]);
    }
    const PlannedPart* end(std::size_t variable) const { return m_parts.data() + m_ends[variable]; }

private:
    std::vector<PlannedPart> m_parts;
    std::vector<quint32> m_ends; // of each variable, in m_parts
};

/// The driver merges runs into blocks, each no longer than its maximum, and never cuts one of these.
struct RefreshPlan {
    std::vector<Variable> runs;        ///< to be handed to the driver, none twice but for runs of bits
    std::vector<Variable> doubleWords; ///< to be queued one by one, past the merging
    PlannedParts parts;                ///< of each variable; each is read whole by one block
};

/// \return what \a part reads for \a variable
Variable askedBy(const PlannedPart& part, const Variable& variable);

/// \param variables stations filled in, and nothing against any (readRefusal())
///
/// Neighbouring bits become one run: the driver files up to two bits of padding behind a block of bits, so no
/// block may end right before a bit that is shown. Long runs of area 7, which the driver would cut anywhere,
/// begin and end at whole bytes for that. Bits in words are refreshed as words.
///
/// No value of several elements is cut apart, and where variables overlap, none ends a run inside a value of
/// another: half of it would be newer than the other half. (Values that overlap each other all along may leave no
/// such place in a run that is too long for one request; then each variable has requests of its own.)
RefreshPlan refreshPlan(const std::vector<Variable>& variables, int maxBlockCount);

/// The same for remote frames. With them the driver writes the number of registers over the count of a cyclic
/// request for double words and takes it for the count of double words again at the next turn; only a request
/// for a single one stays as it is. So each double word is refreshed by a request of its own.
RefreshPlan remoteRefreshPlan(const std::vector<Variable>& variables, int maxBlockCount);

/// \return whichever of the two suits the frames of \a settings, in blocks of their maxBlockCount
RefreshPlan refreshPlan(const std::vector<Variable>& variables, const Settings& settings);

/// \return the largest maxBlockCount with which every block of \a variables stays within what Modbus allows
int blockCountFor(const std::vector<Variable>& variables);

/// \return why blocks of \a maxBlockCount words would break a limit of Modbus; empty when they would not
QString blockRefusal(const std::vector<Variable>& variables, int maxBlockCount);

} // namespace plc

#endif
