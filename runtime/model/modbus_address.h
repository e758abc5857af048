// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the elements of the areas lie in the controller.
#ifndef RUNTIME_MODEL_MODBUS_ADDRESS_H
#define RUNTIME_MODEL_MODBUS_ADDRESS_H

namespace plc
{

/// \return true when the elements of \a area lie among the controller's coils, else among its registers
bool liesInCoils(int area);

/// \return the controller's coil or register that holds \a element, 0..65535; of a double word the low half
int modbusAddress(int area, int element);

/// \return the elements of \a area that have a Modbus address, from element 0 on: those behind them would lie
///         beyond 65535, where a frame would carry the address of another
int modbusElements(int area);

} // namespace plc

#endif
