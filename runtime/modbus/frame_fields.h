// SPDX-License-Identifier: MIT
/// \file
/// \brief Getting values out of a frame, and putting them in.
#ifndef RUNTIME_MODBUS_FRAME_FIELDS_H
#define RUNTIME_MODBUS_FRAME_FIELDS_H

#include "runtime/modbus/protocol.h"

#include <QByteArray>

namespace plc
{

/// \return the byte at \a offset, 0..255; 0 beyond the end
inline int byteAt(const QByteArray& bytes, int offset)
{
    return offset < bytes.size() ? static_cast<unsigned char>(bytes.at(offset)) : 0;
}

/// \return the big-endian 16-bit value at \a offset; bytes beyond the end count as 0
inline int wordAt(const QByteArray& bytes, int offset)
{
    return byteAt(bytes, offset) << 8 | byteAt(bytes, offset + 1);
}

/// Writes \a value big-endian at \a offset, which must be inside \a bytes with the byte behind it.
inline void putWord(QByteArray* bytes, int offset, int value)
{
    char* const place = bytes->data() + offset;
    place[0] = static_cast<char>((value >> 8) & 0xFF);
    place[1] = static_cast<char>(value & 0xFF);
}

/// \return true for a refusal, however long it is: some gateways leave bytes of an older reply behind it
inline bool isException(const QByteArray& reply)
{
    return (byteAt(reply, functionOffset) & exceptionFlag) != 0;
}

/// \return the exception code that \a reply carries; 0 when it is no exception
inline int exceptionCode(const QByteArray& reply)
{
    return isException(reply) ? byteAt(reply, pduDataOffset) : 0;
}

} // namespace plc

#endif
