// SPDX-License-Identifier: MIT
/// \file
/// \brief What came in place of a reply.
#ifndef RUNTIME_LINK_SILENCE_H
#define RUNTIME_LINK_SILENCE_H

#include "runtime/link/link_exchange.h"
#include "runtime/model/failure.h"

namespace plc
{

/// \param code what the driver made of it \param exchange that was sent and brought no reply within \a timeoutMs
Failure silenceFailure(int code, const LinkExchange& exchange, int timeoutMs);

} // namespace plc

#endif
