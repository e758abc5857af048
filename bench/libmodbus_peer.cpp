// SPDX-License-Identifier: MIT
#include "bench/peers.h"

#include <modbus/modbus.h>

#include <stdexcept>

namespace bench
{

namespace
{

const int unit = 1;

bool isRead(modbus_t* modbus, const Block& block)
{
    static std::uint8_t bits[MODBUS_MAX_READ_BITS];
    static std::uint16_t registers[MODBUS_MAX_READ_REGISTERS];
    const int read = block.coils ? modbus_read_bits(modbus, block.address, block.count, bits)
                                 : modbus_read_registers(modbus, block.address, block.count, registers);
    return read == block.count;
}

} // namespace

void LibModbus::Free::operator()(modbus_t* modbus) const
{
    modbus_close(modbus);
    modbus_free(modbus);
}

LibModbus::LibModbus(int port, const Blocks& blocks)
    : m_blocks(blocks), m_modbus(modbus_new_tcp("127.0.0.1", port))
{
    modbus_set_slave(m_modbus.get(), unit);
    modbus_set_response_timeout(m_modbus.get(), patienceMs / 1000, 0);
    if (modbus_connect(m_modbus.get()) != 0)
        throw std::runtime_error("libmodbus cannot connect");
}

void LibModbus::refresh()
{
    for (const Block& block : m_blocks) {
        if (!isRead(m_modbus.get(), block))
            throw std::runtime_error("libmodbus gets no good reply");
    }
}

} // namespace bench
