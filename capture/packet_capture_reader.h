// SPDX-License-Identifier: MIT
/// \file
/// \brief Reads the exchange with a controller out of captured packets.
#ifndef CAPTURE_PACKET_CAPTURE_READER_H
#define CAPTURE_PACKET_CAPTURE_READER_H

#include "capture/capture_entry.h"
#include "capture/packet_file.h"
#include "runtime/model/frame_format.h"

namespace plc
{

/// What packets do not tell.
struct PacketReading {
    /// Missing: a capture of the panel says it by its first packet; in others it is 502.
    std::optional<int> controllerPort;
    FrameFormat format = FrameFormat::ModbusTcp;
    int timeoutMs = 300; ///< a reply that came later was not waited for
};

/// Any bytes will do: what is malformed is an error of the result, with the number of the packet. Packets
/// that are no TCP to or from the controller's port are skipped. A last packet that was cut is left out, with
/// a note; so are those that were captured in part only.
CaptureEnd readPackets(PacketFile* file, const PacketReading& reading, const CaptureSink& sink);

} // namespace plc

#endif
