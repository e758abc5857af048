// SPDX-License-Identifier: MIT
/// \file
/// \brief What an observer of the runtime is told of each exchange.
#ifndef RUNTIME_CYCLE_EXCHANGE_RECORD_H
#define RUNTIME_CYCLE_EXCHANGE_RECORD_H

#include "driver/plcdriver.h"
#include "runtime/link/link_exchange.h"

#include <QByteArray>

namespace plc
{

/// One frame, what came back, and what the driver made of it.
struct ExchangeRecord {
    int durationMs = 0;    ///< until the reply or the time-out
    QByteArray frame;      ///< as the driver built it, number 0
    LinkExchange exchange; ///< as it went over the link
    RW_VAR request;        ///< the request that the frame was built for
    bool replyExpected = true;
    int result = 0; ///< the driver's code: 1 done, 0 to be retried, else failed for good
};

} // namespace plc

#endif
