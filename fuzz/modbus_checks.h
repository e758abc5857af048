// SPDX-License-Identifier: MIT
/// \file
/// \brief What the Modbus Application Protocol says of a reply, for any request to the simulated controller.
#ifndef FUZZ_MODBUS_CHECKS_H
#define FUZZ_MODBUS_CHECKS_H

#include "simulator/controller_memory.h"
#include "simulator/frame_bytes.h"
#include "simulator/request_server.h"

#include <vector>

namespace fuzz
{

/// \return whether \a request has a header that an answer can be given to: protocol 0 and a length that fits
bool isModbusRequest(const simulator::Bytes& request);

/// \return the exception that \a request, which isModbusRequest(), must be refused with; 0 for none
unsigned expectedException(const simulator::Bytes& request,
                           const std::vector<simulator::AddressRange>& refused);

/// Checks the answer to a request to a unit that answers.
/// \param memory as it is after the request was executed
void checkModbusReply(const simulator::Bytes& request, const simulator::Bytes& reply, unsigned exception,
                      const simulator::ControllerMemory& memory);

} // namespace fuzz

#endif
