/// \file
/// \brief Where the fields of a Modbus TCP frame are.
#ifndef RUNTIME_MODBUS_FRAME_FIELDS_H
#define RUNTIME_MODBUS_FRAME_FIELDS_H

#include <QByteArray>

namespace plc
{

const int numberOffset = 0;   ///< transaction identifier
const int protocolOffset = 2; ///< protocol identifier, 0 for Modbus
const int lengthOffset = 4;   ///< bytes behind the length field itself
const int headerToLength = 6; ///< bytes that the length does not count
const int unitOffset = 6;
const int functionOffset = 7;
const int pduDataOffset = 8;
const int exceptionFlag = 0x80;

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
    (*bytes)[offset] = static_cast<char>((value >> 8) & 0xFF);
    (*bytes)[offset + 1] = static_cast<char>(value & 0xFF);
}

} // namespace plc

#endif
