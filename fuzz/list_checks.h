// SPDX-License-Identifier: MIT
/// \file
/// \brief What the scheduler and the adding functions may do to the driver's lists.
#ifndef FUZZ_LIST_CHECKS_H
#define FUZZ_LIST_CHECKS_H

#include "driver/modbus_rtu_master.h"

#include <vector>

namespace fuzz
{

/// Made in front of a call of ComCommunication(), compared behind it.
class TurnExpectation
{
public:
    TurnExpectation();

    /// A call that built nothing because a frame is pending, or there are no settings.
    void compareUnchanged() const;

    /// A call that gave one of the lists its turn.
    void compare(const COMINFO& settings) const;

    /// \return whether the turn was that of the head of the write list
    bool builtWrite() const;

private:
    void compareFrames(const COMINFO& settings) const;
    void compareCallbacks(const COMINFO& settings) const;

    int m_reads;
    int m_writeRun;
    std::vector<int> m_writes; // stations
    std::vector<int> m_onceReads;
};

/// A list that was given \a pieces requests at most; \a direct: exactly one, without a limit.
void checkGrowth(int before, int after, int pieces, bool direct);

/// The one-shot reads from \a first on, which were queued by address text.
void checkPieces(int first, const COMINFO& settings);

/// The cyclic reads that were made of \a list.
void checkRebuilt(const QList<HOST_VAR>& list, const COMINFO& settings);

} // namespace fuzz

#endif
