// SPDX-License-Identifier: MIT
/// \file
/// \brief What the panel tells of one station.
#ifndef RUNTIME_MODEL_STATION_REPORT_H
#define RUNTIME_MODEL_STATION_REPORT_H

#include "runtime/model/failure.h"

#include <QtGlobal>

namespace plc
{

enum class StationCondition {
    NotTried,     ///< no request to it has ended yet
    Answering,    ///< it answered last, be it with a refusal
    NotAnswering, ///< its last request was given up without an answer; it is tried again
    Pausing,      ///< the same, and it is left alone for a while
    SwitchedOff   ///< by the user
};

struct StationReport {
    int station = 0;
    StationCondition condition = StationCondition::NotTried;
    qint64 nextTryMs = -1; ///< when pausing: until it is tried again; -1 otherwise
    long answers = 0;      ///< replies of any kind
    long failures = 0;     ///< requests given up
    Failure failure;       ///< of the last one that was given up, when it does not answer
    int writesWaiting = 0; ///< requests, of writes, that have not ended; a long write is several
    int readsWaiting = 0;  ///< the same of one-shot reads
};

} // namespace plc

#endif
