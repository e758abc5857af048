// SPDX-License-Identifier: MIT
#include "panel/session/received_reply.h"

#include "runtime/modbus/dialect.h"

namespace plc
{

QByteArray replyAsReceived(const LinkExchange& exchange)
{
    return dialectOf(exchange.format).withNumberOf(exchange.sentFrame, exchange.reply);
}

} // namespace plc
