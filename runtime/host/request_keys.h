// SPDX-License-Identifier: MIT
/// \file
/// \brief The keys by which the panel knows its requests again in the driver's records.
#ifndef RUNTIME_HOST_REQUEST_KEYS_H
#define RUNTIME_HOST_REQUEST_KEYS_H

namespace plc
{

// RW_VAR::hostKey says what kind of request it is, RW_VAR::hostSubKey which one. Cyclic blocks
// have the key 0, which the driver gives them.
const int cyclicKey = 0;
const int writeKey = 0x01000000;
const int onceReadKey = 0x02000000;
const int pacingKey = 0x03000000;

} // namespace plc

#endif
