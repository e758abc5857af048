// SPDX-License-Identifier: MIT
#include "bench/serialbus_codec.h"

#include <QDataStream>

namespace bench
{

namespace
{

const quint16 modbusProtocol = 0;
const quint8 unitNumber = 1;

} // namespace

QByteArray SerialBusCodec::encode(const QModbusRequest& request)
{
    QByteArray frame;
    QDataStream out(&frame, QIODevice::WriteOnly);
    const quint16 bytesLeft = static_cast<quint16>(1 + request.size());
    out << m_number++ << modbusProtocol << bytesLeft << unitNumber << request;
    return frame;
}

bool SerialBusCodec::decode(const QByteArray& frame, QModbusDataUnit* unit)
{
    QDataStream in(frame);
    quint16 number = 0;
    quint16 protocol = 0;
    quint16 bytesLeft = 0;
    quint8 station = 0;
    in >> number >> protocol >> bytesLeft >> station;
    QModbusResponse response;
    in >> response;
    return processResponse(response, unit);
}

} // namespace bench
