// SPDX-License-Identifier: MIT
/// \file
/// \brief A reply as it came over the link.
#ifndef PANEL_SESSION_RECEIVED_REPLY_H
#define PANEL_SESSION_RECEIVED_REPLY_H

#include "runtime/link/link_exchange.h"

namespace plc
{

/// \return the reply as it came over the link, with the number that the frame went out with; empty when
///         none came
QByteArray replyAsReceived(const LinkExchange& exchange);

} // namespace plc

#endif
