// SPDX-License-Identifier: MIT
#include "runtime/modbus/frame_words.h"

#include "runtime/modbus/exception_words.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/reply_fault.h"
#include "runtime/model/counted.h"

#include <QStringList>

namespace plc
{

namespace
{

QString unitWords(const QByteArray& frame)
{
    const int unit = byteAt(frame, unitOffset);
    return unit == broadcastStation ? QStringLiteral("all units") : QStringLiteral("unit %1").arg(unit);
}

QString registersFrom(const QByteArray& bytes, int offset)
{
    QStringList words;
    for (int at = offset; at + 1 < bytes.size(); at += 2)
        words << QString::number(wordAt(bytes, at));
    return words.join(QLatin1Char(' '));
}

/// The coils of a read reply; \a quantity of them, because the last byte is padded.
QString coilsFrom(const QByteArray& reply, int quantity)
{
    QString bits;
    for (int bit = 0; bit < quantity && readDataOffset + bit / 8 < reply.size(); ++bit)
        bits += QLatin1Char((byteAt(reply, readDataOffset + bit / 8) >> (bit % 8) & 1) != 0 ? '1' : '0');
    return bits;
}

/// \return bytes of the shortest request with this function; without one the frame has no function
int sizeOfRequest(int function)
{
    switch (function) {
    case ReportServerId:
        return pduDataOffset;
    case ReadDeviceIdentification:
        return pduDataOffset + 3;
    default:
        return quantityOffset + 2;
    }
}

QString wholeRequestWords(const QByteArray& frame)
{
    const int address = wordAt(frame, addressOffset);
    const int quantity = wordAt(frame, quantityOffset);
    switch (byteAt(frame, functionOffset)) {
    case ReadCoils:
        return QStringLiteral("read %1 from %2").arg(counted(quantity, "coil")).arg(address);
    case ReadRegisters:
        return QStringLiteral("read %1 from %2").arg(counted(quantity, "register")).arg(address);
    case WriteCoil:
        return QStringLiteral("switch coil %1 %2")
            .arg(address)
            .arg(QLatin1String(wordAt(frame, singleValueOffset) == coilOn ? "on" : "off"));
    case WriteRegister:
        return QStringLiteral("write register %1: %2").arg(address).arg(wordAt(frame, singleValueOffset));
    case WriteRegisters:
        return QStringLiteral("write %1 from %2: %3")
            .arg(counted(quantity, "register"))
            .arg(address)
            .arg(registersFrom(frame, multipleValuesOffset));
    case ReportServerId:
        return QStringLiteral("report the server's identity");
    case ReadDeviceIdentification:
        return QStringLiteral("read the device's identity");
    default:
        return QStringLiteral("function %1").arg(byteAt(frame, functionOffset));
    }
}

QString exceptionReplyWords(int code)
{
    return QStringLiteral("refused, exception %1: %2").arg(code).arg(exceptionWords(code));
}

QString wholeReplyWords(const QByteArray& frame, const QByteArray& reply)
{
    switch (byteAt(reply, functionOffset)) {
    case ReadCoils:
        return QStringLiteral("coils %1").arg(coilsFrom(reply, wordAt(frame, quantityOffset)));
    case ReadRegisters:
        return QStringLiteral("registers %1").arg(registersFrom(reply, readDataOffset));
    case WriteCoil:
    case WriteRegister:
    case WriteRegisters:
        return QStringLiteral("written");
    default:
        return QStringLiteral("answer to function %1").arg(byteAt(reply, functionOffset));
    }
}

} // namespace

QString hexText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

QString requestWords(const QByteArray& frame)
{
    if (frame.size() < sizeOfRequest(byteAt(frame, functionOffset)))
        return QStringLiteral("no whole request (%1)").arg(counted(frame.size(), "byte"));
    return unitWords(frame) + QStringLiteral(": ") + wholeRequestWords(frame);
}

QString replyWords(const QByteArray& frame, const QByteArray& reply)
{
    if (reply.isEmpty())
        return QStringLiteral("no reply");
    if (reply.size() <= pduDataOffset)
        return QStringLiteral("no whole reply (%1)").arg(counted(reply.size(), "byte"));
    const QString unit = unitWords(reply) + QStringLiteral(": ");
    if (isException(reply))
        return unit + exceptionReplyWords(exceptionCode(reply));
    const FailureKind fault = replyFault(frame, reply);
    return unit + (fault == FailureKind::None ? wholeReplyWords(frame, reply) : replyFaultWords(fault));
}

} // namespace plc
