// SPDX-License-Identifier: MIT
/// \file
/// \brief What a request frame writes into the controller.
#ifndef SOAK_WRITE_FRAME_H
#define SOAK_WRITE_FRAME_H

#include "simulator/frame_bytes.h"

#include <optional>
#include <tuple>
#include <vector>

namespace soak
{

/// A place in the controller.
struct Address {
    int unit = 0;
    bool isCoil = false;
    int number = 0; ///< coil or register, 0..65535
};

inline bool operator<(const Address& a, const Address& b)
{
    return std::tie(a.unit, a.isCoil, a.number) < std::tie(b.unit, b.isCoil, b.number);
}

struct WriteFrame {
    Address first;
    std::vector<int> content; ///< registers in order, or one number for a bit
};

/// \param frame a whole request, as a controller takes it; \a isRemote: a remote frame, not Modbus TCP
/// \return nothing for a read
std::optional<WriteFrame> writeOf(const simulator::Bytes& frame, bool isRemote);

} // namespace soak

#endif
