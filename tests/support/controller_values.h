// SPDX-License-Identifier: MIT
/// \file
/// \brief The simulated controller's memory as the areas see it.
#ifndef TESTS_CONTROLLER_VALUES_H
#define TESTS_CONTROLLER_VALUES_H

#include "simulator/simulated_controller.h"

#include <QtGlobal>

/// \return Modbus address of an element, as the controller's manual has it
inline int modbusAddress(int area, int element)
{
    const int bases[15] = {0xF800, 0xFC00, 0x0000, 0x2400, 0xE000, 0xF000, 0xF400, 0x1F40,
                           0x0000, 0x0000, 0x3000, 0x2400, 0xF000, 0xF400, 0xF700};
    const int scaled = area == 8 ? element / 16 : area == 14 ? 2 * element : element;
    return (bases[area] + scaled) & 0xFFFF;
}

/// \return what the controller has for an element
inline quint32 inController(simulator::SimulatedController& controller, int area, int element, int unit = 1)
{
    const int address = modbusAddress(area, element);
    simulator::ControllerMemory& memory = controller.memory();
    if (area < 8)
        return memory.coil(unit, address) ? 1 : 0;
    const quint32 low = memory.holdingRegister(unit, address);
    if (area == 8)
        return low >> (element % 16) & 1;
    return area == 14 ? low | static_cast<quint32>(memory.holdingRegister(unit, address + 1)) << 16 : low;
}

/// Sets an element of the controller.
inline void putIntoController(simulator::SimulatedController& controller, int area, int element,
                              quint32 value, int unit = 1)
{
    const int address = modbusAddress(area, element);
    simulator::ControllerMemory& memory = controller.memory();
    if (area < 8) {
        memory.setCoil(unit, address, value != 0);
    } else if (area == 8) {
        const quint32 bit = 1u << (element % 16);
        const quint32 word = memory.holdingRegister(unit, address);
        memory.setHoldingRegister(unit, address, static_cast<quint16>(value != 0 ? word | bit : word & ~bit));
    } else {
        memory.setHoldingRegister(unit, address, static_cast<quint16>(value & 0xFFFF));
        if (area == 14)
            memory.setHoldingRegister(unit, address + 1, static_cast<quint16>(value >> 16));
    }
}

#endif
