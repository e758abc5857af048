// SPDX-License-Identifier: MIT
/// \file
/// \brief One remote request in, one reply out, without any network.
#ifndef SIMULATOR_REMOTE_SERVER_H
#define SIMULATOR_REMOTE_SERVER_H

#include "simulator/address_range.h"
#include "simulator/controller_memory.h"
#include "simulator/remote_frame.h"

#include <functional>
#include <vector>

namespace simulator
{

/// Executes remote requests on a ControllerMemory; the frames are described in remote_frame.h. There are no
/// exceptions in this format: what cannot be served is neither executed nor answered. That is an area code
/// above 14, a read of bits in words (area 8), elements outside the area, and an address in a hole.
///
/// A write may carry fewer bytes than its count needs: elements whose bytes are not all there stay as they
/// are. More bytes are ignored. The lowest bit of a byte is the value of a bit.
///
/// Station 0 is every unit: a write is executed on each that has a memory and is not answered. A read of
/// station 0 is not answered either, since there is no memory of a unit 0, although its sender may wait for
/// it.
///
/// Every function may be called from any thread.
class RemoteServer
{
public:
    /// `memory` must outlive the server. `answers` says whether a unit (1 to 255) is switched on.
    RemoteServer(ControllerMemory& memory, std::vector<AddressRange> holes,
                 std::function<bool(int unit)> answers);

    /// Executes `request`, a whole frame with a right sum, and returns the reply; empty if there is none.
    Bytes answer(const Bytes& request);

private:
    bool isServed(const RemoteRequest& request) const;
    bool isRefused(const RemoteRequest& request, int unit) const;
    void executeOnAll(const RemoteRequest& request, const Bytes& frame);

    ControllerMemory& m_memory;
    const std::vector<AddressRange> m_holes;
    const std::function<bool(int)> m_answers;
};

} // namespace simulator

#endif
