#include "panel/session/received_reply.h"

#include "runtime/modbus/protocol.h"

namespace plc
{

namespace
{

const int numberSize = protocolOffset - numberOffset;

} // namespace

QByteArray replyAsReceived(const LinkExchange& exchange)
{
    QByteArray reply = exchange.reply;
    if (!exchange.remote && reply.size() >= numberSize && exchange.sentFrame.size() >= numberSize)
        reply.replace(0, numberSize, exchange.sentFrame.left(numberSize));
    return reply;
}

} // namespace plc
