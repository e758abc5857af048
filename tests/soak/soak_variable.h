// SPDX-License-Identifier: MIT
/// \file
/// \brief The variables of a soak run, and which values belong to which of their writes.
#ifndef SOAK_SOAK_VARIABLE_H
#define SOAK_SOAK_VARIABLE_H

#include "runtime/model/variable.h"

#include <vector>

namespace soak
{

struct SoakVariable {
    plc::Variable where; ///< station filled in
    quint32 tag = 0;     ///< no other variable of the run has it
    bool isWritten = false;
};

/// \return what write number \a serial puts into \a variable; 0 is what it holds at the start
///
/// Words and double words name their variable and the serial, so that a value of another variable, a torn
/// one and one of another write are seen as such. A lone word has only 1024 values of its own, a bit two.
std::vector<quint32> valuesOf(const SoakVariable& variable, quint32 serial);

/// \return true when two of any 1024 writes in a row never carry the same values
bool namesItsWrites(const SoakVariable& variable);

/// \return for each station the same variables: lone ones, neighbours and long ones of every kind of element,
///         and some that are never written, in pairs that only their values tell apart
std::vector<SoakVariable> soakVariables(const std::vector<int>& stations);

} // namespace soak

#endif
