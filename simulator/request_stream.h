// SPDX-License-Identifier: MIT
/// \file
/// \brief Cuts the bytes of one connection into requests.
#ifndef SIMULATOR_REQUEST_STREAM_H
#define SIMULATOR_REQUEST_STREAM_H

#include "simulator/frame_bytes.h"

#include <optional>

namespace simulator
{

/// Puts requests together by the length field of their header, however TCP cut them. For one thread.
class RequestStream
{
public:
    void append(const std::uint8_t* bytes, std::size_t count);

    /// The next whole request, or nothing until more bytes come.
    std::optional<Bytes> next();

    /// Whether the next header belongs to another protocol or gives an impossible length. Where the next
    /// request begins is then unknown, and next() gives nothing any more.
    bool isBroken() const;

private:
    Bytes m_pending;
};

} // namespace simulator

#endif
