// SPDX-License-Identifier: MIT
/// \file
/// \brief Other ways to refresh a list: each connects at once and then reads the whole list in refresh().
///
/// All of them throw std::runtime_error when the controller does not answer as expected.
#ifndef BENCH_PEERS_H
#define BENCH_PEERS_H

#include "bench/block.h"
#include "bench/panel_refresh.h"

#include <QEventLoop>
#include <QModbusTcpClient>

#include <memory>

typedef struct _modbus modbus_t; // as <modbus.h> has it

namespace bench
{

/// The floor: frames that are there already go out of a blocking socket, and whole replies come in.
class BareSocket
{
public:
    BareSocket(int port, const std::vector<QByteArray>& frames);
    ~BareSocket();
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    void refresh();

private:
    void receiveReply();

    const std::vector<QByteArray> m_frames;
    int m_socket;
};

class LibModbus
{
public:
    LibModbus(int port, const Blocks& blocks);

    void refresh();

private:
    struct Free {
        void operator()(modbus_t* modbus) const;
    };

    const Blocks m_blocks;
    std::unique_ptr<modbus_t, Free> m_modbus;
};

/// Needs a QCoreApplication.
class SerialBus
{
public:
    /// \param atOnce requests that are under way together; the driver has one
    SerialBus(int port, const Blocks& blocks, int atOnce);

    void refresh();

private:
    void sendNext();
    void finished(QModbusReply* reply);

    const Blocks m_blocks;
    const int m_atOnce;
    QModbusTcpClient m_client;
    QEventLoop m_loop;
    std::size_t m_sent = 0;
    std::size_t m_answered = 0;
    bool m_failed = false;
};

} // namespace bench

#endif
