// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the fields of a remote request are. A reply has unit and area where protocol.h has unit
///        and function.
#ifndef RUNTIME_MODBUS_REMOTE_FIELDS_H
#define RUNTIME_MODBUS_REMOTE_FIELDS_H

namespace plc
{

const int remoteStationOffset = 4;
const int remoteAreaOffset = 5;    ///< 16 bits
const int remoteElementOffset = 7; ///< 32 bits
const int remoteCountOffset = 11;  ///< 16 bits
const int remoteValueOffset = 21;
const int remoteReadSize = 22; ///< a write is longer

const int remoteReplyAreaOffset = 7;
const int remoteReplyByteCountOffset = 8; ///< of the reply to a read: of its data, modulo 256
const int remoteReplyDataOffset = 9;      ///< of the reply to a read
const int remoteReplyElementOffset = 8;   ///< of the reply to a write: low 16 bits
const int remoteReplyCountOffset = 10;    ///< of the reply to a write

} // namespace plc

#endif
