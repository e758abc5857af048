// SPDX-License-Identifier: MIT
/// \file
/// \brief Bytes of a Modbus TCP frame: offsets, sizes, and putting and getting big-endian values.
///
/// Modbus Messaging on TCP/IP Implementation Guide V1.0b, section 3.1.3 (MBAP header); Modbus Application
/// Protocol V1.1b3, section 6 (function codes).
#ifndef FRAMES_FRAME_BYTES_H
#define FRAMES_FRAME_BYTES_H

#include "frames/address_map.h"

#include <QByteArray>

enum {
    PROTOCOL_OFFSET = 2,     ///< number of the protocol, behind that of the transaction
    MBAP_LENGTH_OFFSET = 4,  ///< the header's length field
    MBAP_LENGTH_END = 6,     ///< and what it counts begins here
    UNIT_OFFSET = 6,         ///< unit identifier, which ends the header
    FUNCTION_OFFSET = 7,     ///< function code
    ADDRESS_OFFSET = 8,      ///< Modbus address of a request
    REPLY_DATA_OFFSET = 9,   ///< header (7), function code, byte count
    WRITE_REPLY_LENGTH = 12, ///< header (7), function code, address, and value or quantity
    FRAME_VALUE_OFFSET = 10  ///< what follows the address: quantity, or the value of a single write
};

/// Appends the low 16 bits of \a value, high byte first.
void Put16(QByteArray& bytes, int value);

/// Appends all 32 bits of \a value, high byte first.
void Put32(QByteArray& bytes, int value);

/// Puts the low 16 bits of \a value, high byte first, into two bytes that are there.
inline void Set16(char* bytes, int value)
{
    bytes[0] = static_cast<char>((value >> 8) & 0xFF);
    bytes[1] = static_cast<char>(value & 0xFF);
}

/// \return the 16-bit value at \a bytes, high byte first
inline unsigned int Get16(const unsigned char* bytes)
{
    return (static_cast<unsigned int>(bytes[0]) << 8) | bytes[1];
}

/// \return byte \a at (0 or more) of \a bytes, 0 beyond its end
inline unsigned char ByteAt(const QByteArray& bytes, int at)
{
    return at < bytes.size() ? static_cast<unsigned char>(bytes.at(at)) : static_cast<unsigned char>(0);
}

/// Appends zero bytes until \a bytes holds at least \a size of them.
void PadTo(QByteArray& bytes, int size);

/// A frame as far as its Modbus address: transaction and protocol number 0, the length field, the low byte of
/// \a station, \a function and \a modbusAddress. The \a bytesAfterAddress that follow are there, for the caller to
/// set. The bytes of \a room may be any; they are overwritten.
QByteArray BeginFrame(QByteArray room, int station, FunctionCode function, int modbusAddress,
                      int bytesAfterAddress);

#endif
