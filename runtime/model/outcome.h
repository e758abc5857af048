/// \file
/// \brief How a write or a one-shot read ended.
#ifndef RUNTIME_MODEL_OUTCOME_H
#define RUNTIME_MODEL_OUTCOME_H

#include <QString>

#include <vector>

namespace plc
{

/// A long write goes out as several requests. It is confirmed when the controller confirmed every one.
struct WriteOutcome {
    bool confirmed = false;
    bool broadcast = false;    ///< sent to station 0: no controller answers, so none confirmed it
    int code = 0;              ///< result code of the first request that failed; 0: it was never sent
    QString reason;            ///< why it failed, in words; empty when confirmed
    int requests = 0;          ///< requests that the write was cut into
    int requestsConfirmed = 0; ///< of these confirmed; a failed write may have been carried out in part
};

struct ReadOutcome {
    bool done = false;
    int code = 0;                ///< result code of the first request that failed; 0: it was never sent
    QString reason;              ///< why it failed, in words; empty when done
    std::vector<quint32> values; ///< one per element, as the controller answered; empty when failed
};

} // namespace plc

#endif
