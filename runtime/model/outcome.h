// SPDX-License-Identifier: MIT
/// \file
/// \brief How a write or a one-shot read ended.
#ifndef RUNTIME_MODEL_OUTCOME_H
#define RUNTIME_MODEL_OUTCOME_H

#include "runtime/model/failure.h"

#include <QtGlobal>

#include <functional>
#include <vector>

namespace plc
{

/// A long write goes out as several requests. It is confirmed when the controller confirmed every one.
struct WriteOutcome {
    bool confirmed = false;
    bool broadcast = false;    ///< sent to station 0: no controller answers, so none confirmed it
    Failure failure;           ///< of the first request that failed; its words: failureWords()
    int requests = 0;          ///< requests that the write was cut into
    int requestsConfirmed = 0; ///< of these confirmed; a failed write may have been carried out in part
};

struct ReadOutcome {
    bool done = false;
    Failure failure;             ///< of the first request that failed; its words: failureWords()
    std::vector<quint32> values; ///< one per element, as the controller answered; empty when failed
};

/// How a write, or a read, ended; Runtime says on which thread.
using WriteDone = std::function<void(const WriteOutcome&)>;
using ReadDone = std::function<void(const ReadOutcome&)>;

} // namespace plc

#endif
