// SPDX-License-Identifier: MIT
/// \file
/// \brief The gateway at work: from the controller over the spool to the broker.
#ifndef GATEWAY_SERVICE_GATEWAY_SERVICE_H
#define GATEWAY_SERVICE_GATEWAY_SERVICE_H

#include "gateway/options/gateway_options.h"

namespace plc
{

/// Publishes until SIGTERM or SIGINT comes; these must be blocked in every thread.
/// \throws std::runtime_error when it cannot begin, saying why
void runGateway(const GatewayOptions& options);

} // namespace plc

#endif
