// SPDX-License-Identifier: MIT
/// \file
/// \brief The part of Qt SerialBus that a request cycle of the driver corresponds to.
#ifndef BENCH_SERIALBUS_CODEC_H
#define BENCH_SERIALBUS_CODEC_H

#include <QModbusClient>
#include <QModbusDataUnit>
#include <QModbusPdu>

namespace bench
{

/// Encodes requests and decodes replies as QModbusTcpClient does, without its socket, timers and reply
/// objects.
class SerialBusCodec : public QModbusClient
{
public:
    /// \return the whole frame
    QByteArray encode(const QModbusRequest& request);

    /// Decodes a whole reply frame and puts its values into \a unit.
    /// \return whether it was a good reply
    bool decode(const QByteArray& frame, QModbusDataUnit* unit);

protected:
    bool open() override { return false; }
    void close() override {}

private:
    quint16 m_number = 0;
};

} // namespace bench

#endif
