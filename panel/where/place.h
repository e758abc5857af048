// SPDX-License-Identifier: MIT
/// \file
/// \brief Where a variable lies in the controller, and by which functions it is reached over Modbus TCP.
#ifndef PANEL_WHERE_PLACE_H
#define PANEL_WHERE_PLACE_H

#include "runtime/model/variable.h"

#include <QString>

#include <vector>

namespace plc
{

/// What requests carry, as the driver builds them; the tests compare both.
struct Place {
    bool inCoils = false; ///< else in holding registers
    int first = 0;        ///< coil or register, from 0 on
    int last = 0;
    int firstBit = -1;               ///< of bits in words: in the first register, 0 is the lowest
    int lastBit = -1;                ///< the same in the last one
    std::vector<int> readFunctions;  ///< empty: no controller answers a broadcast
    std::vector<int> writeFunctions; ///< in the order in which they first go out; empty: it can only be read
};

/// \param elements that lie within Modbus addresses
Place placeOf(const Variable& elements);

/// \return "register 100" or "coils 16-23"
QString placeText(const Place& place);

/// \return the addresses in hexadecimal, "0x0064" or "0x0064-0x0065"
QString hexAddressText(const Place& place);

/// \return the numbers that documents of controllers often use, which count from 1 and tell the kind by their first
///         digit: "40101" or "40101-40102", coils "00017". They have six digits behind 9999: "410001".
QString traditionalText(const Place& place);

/// \return what Modbus calls a function that a Place has
QString functionName(int function);

} // namespace plc

#endif
