// SPDX-License-Identifier: MIT
#include "runtime/modbus/reply_fault.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"
#include "runtime/model/area_table.h"

namespace plc
{

namespace
{

const int lowByte = 0xFF;

bool repeatsWord(const QByteArray& request, const QByteArray& reply, int offset)
{
    return wordAt(request, offset) == wordAt(reply, offset);
}

FailureKind echoFault(const QByteArray& request, const QByteArray& reply)
{
    if (!repeatsWord(request, reply, addressOffset))
        return FailureKind::OtherAddress;
    if (repeatsWord(request, reply, quantityOffset)) // where that of one coil or register has its value
        return FailureKind::None;
    const bool isOfSeveral = byteAt(request, functionOffset) == WriteRegisters;
    return isOfSeveral ? FailureKind::OtherQuantity : FailureKind::OtherValue;
}

/// \param expected bytes of data
FailureKind byteCountFault(const QByteArray& reply, int expected)
{
    const bool isAsLong = reply.size() == readDataOffset + expected;
    return isAsLong && byteAt(reply, byteCountOffset) != expected ? FailureKind::OtherByteCount
                                                                  : FailureKind::None;
}

} // namespace

FailureKind replyFault(const QByteArray& request, const QByteArray& reply)
{
    if (isException(reply))
        return FailureKind::Exception;
    const int quantity = wordAt(request, quantityOffset);
    switch (byteAt(request, functionOffset)) {
    case ReadCoils:
        return byteCountFault(reply, (quantity + bitsOfByte - 1) / bitsOfByte);
    case ReadRegisters:
        return byteCountFault(reply, 2 * quantity);
    case WriteCoil:
    case WriteRegister:
    case WriteRegisters:
        return reply.size() == writeReplySize ? echoFault(request, reply) : FailureKind::None;
    default:
        return FailureKind::None;
    }
}

FailureKind remoteReplyFault(const QByteArray& request, const QByteArray& reply)
{
    const int announced = byteAt(reply, remoteReplyByteCountOffset);
    const bool isToRead = request.size() == remoteReadSize && reply.size() >= remoteReplyDataOffset;
    const int came = (reply.size() - remoteReplyDataOffset) & lowByte; // a longer reply counts modulo 256
    return isToRead && announced != came ? FailureKind::OtherByteCount : FailureKind::None;
}

QString replyFaultWords(FailureKind fault)
{
    switch (fault) {
    case FailureKind::OtherAddress:
        return QStringLiteral("the controller echoed another address than the one written to");
    case FailureKind::OtherValue:
        return QStringLiteral("the controller echoed another value than the one written");
    case FailureKind::OtherQuantity:
        return QStringLiteral("the controller echoed another number of registers than was written");
    case FailureKind::OtherByteCount:
        return QStringLiteral("the controller announced another number of bytes than what was asked for");
    default:
        return QString();
    }
}

QByteArray replyOfWrongLength()
{
    return QByteArray(1, '\0'); // not empty, which means that there was no reply
}

} // namespace plc
