// SPDX-License-Identifier: MIT
/// \file
/// \brief One request in, one reply out: what a controller answers, without any network.
#ifndef SIMULATOR_REQUEST_SERVER_H
#define SIMULATOR_REQUEST_SERVER_H

#include "simulator/address_range.h"
#include "simulator/controller_memory.h"
#include "simulator/frame_bytes.h"

#include <array>
#include <atomic>
#include <vector>

namespace simulator
{

struct ModbusFunction;

/// Executes Modbus TCP requests on a ControllerMemory.
///
/// Served are the functions 1, 3, 5, 6, 15 and 16, and 2 and 4 for masters that read inputs: discrete inputs are the
/// coils, input registers the holding registers. Refused like a real controller does, in this order:
///  - any other function: exception 1;
///  - a quantity of 0 or beyond what Modbus allows, a byte count or a request length that does not fit the
///    function and quantity, a coil value that is neither on nor off: exception 3;
///  - an address past 65535 or in a hole: exception 2.
///
/// Unit 0 is broadcast: a write is executed on every unit that has a memory, a read does nothing, and
/// neither is answered. Every function may be called from any thread; requests to the memory are executed one by
/// one.
class RequestServer
{
public:
    /// `memory` must outlive the server.
    explicit RequestServer(ControllerMemory& memory, std::vector<AddressRange> holes = {});

    /// Executes `request`, one frame with its header, and returns the reply; empty when nothing is to be
    /// sent. A frame that is too short, belongs to another protocol or whose length field does not match
    /// its size is ignored: no controller could find its end.
    Bytes answer(const Bytes& request);

    /// The exception reply to `request`, which is not executed; empty as for answer().
    Bytes refuse(const Bytes& request, unsigned exceptionCode) const;

    /// Whether requests to this unit are answered: not for broadcast, and not while it is silent.
    bool answers(int unit) const;

    /// A silent unit neither executes nor answers anything, broadcasts included, as if switched off.
    /// Units are 1 to 255, any other is ignored.
    void setSilent(int unit, bool silent);

private:
    Bytes execute(const Bytes& request, int unit);
    void executeOnAll(const Bytes& request);
    unsigned objection(const ModbusFunction* function, const Bytes& request, int unit) const;

    ControllerMemory& m_memory;
    const std::vector<AddressRange> m_holes;
    std::array<std::atomic<bool>, lastUnit + 1> m_silent{};
};

} // namespace simulator

#endif
