// SPDX-License-Identifier: MIT
/// \file
/// \brief What the panel shows of one cyclically refreshed variable.
#ifndef RUNTIME_MODEL_CYCLIC_VALUE_H
#define RUNTIME_MODEL_CYCLIC_VALUE_H

#include "runtime/export.h"
#include "runtime/model/failure.h"

#include <QString>
#include <QtGlobal>

#include <vector>

namespace plc
{

enum class ValueState : quint8 {
    NeverRead,   ///< the controller has not answered yet; the values mean nothing
    StationOff,  ///< its station is switched off; the values are old
    Failed,      ///< the last attempt to read it failed for good; the values are old
    Stale,       ///< not refreshed for longer than Settings::staleAfterMs
    Unconfirmed, ///< a write to it is on its way or has failed since it was read last
    Fresh        ///< as the controller answered
};

/// \return "fresh", "stale", ... for tables and JSON
PLCRUNTIME_API QString valueStateWord(ValueState state);

struct CyclicValue {
    ValueState state = ValueState::NeverRead;
    std::vector<quint32> values; ///< one per element; zeros before the first answer
    qint64 ageMs = -1;           ///< since the controller's last answer; -1 before the first
    qint64 readAtMs = -1; ///< when that came, in ms since 1970 UTC by the system's clock; -1 before the first
    Failure failure;      ///< of the last attempt to read it; its words: failureWords()
};

} // namespace plc

#endif
