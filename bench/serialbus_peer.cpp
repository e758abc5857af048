// SPDX-License-Identifier: MIT
#include "bench/peers.h"

#include <QModbusDataUnit>
#include <QModbusReply>
#include <QVariant>

#include <stdexcept>

namespace bench
{

namespace
{

const int unit = 1;

} // namespace

SerialBus::SerialBus(int port, const Blocks& blocks, int atOnce) : m_blocks(blocks), m_atOnce(atOnce)
{
    m_client.setConnectionParameter(QModbusDevice::NetworkAddressParameter, QStringLiteral("127.0.0.1"));
    m_client.setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
    m_client.setTimeout(patienceMs);
    QObject::connect(&m_client, &QModbusClient::stateChanged, &m_loop, &QEventLoop::quit);
    if (m_client.connectDevice()) {
        while (m_client.state() == QModbusDevice::ConnectingState)
            m_loop.exec();
    }
    m_client.disconnect(&m_loop);
    if (m_client.state() != QModbusDevice::ConnectedState)
        throw std::runtime_error("Qt SerialBus cannot connect");
}

void SerialBus::refresh()
{
    m_sent = 0;
    m_answered = 0;
    for (int i = 0; i < m_atOnce && m_sent < m_blocks.size(); ++i)
        sendNext();
    m_loop.exec();
    if (m_failed)
        throw std::runtime_error("Qt SerialBus gets no good reply");
}

void SerialBus::sendNext()
{
    const Block& block = m_blocks[m_sent++];
    const QModbusDataUnit asked(block.coils ? QModbusDataUnit::Coils : QModbusDataUnit::HoldingRegisters,
                                block.address, static_cast<quint16>(block.count));
    QModbusReply* reply = m_client.sendReadRequest(asked, unit);
    if (reply == nullptr)
        throw std::runtime_error("Qt SerialBus does not send");
    QObject::connect(reply, &QModbusReply::finished, &m_loop, [this, reply] { finished(reply); });
}

void SerialBus::finished(QModbusReply* reply)
{
    m_failed = m_failed || reply->error() != QModbusDevice::NoError;
    reply->deleteLater();
    ++m_answered;
    if (m_answered == m_blocks.size() || m_failed)
        m_loop.quit();
    else if (m_sent < m_blocks.size())
        sendNext();
}

} // namespace bench
