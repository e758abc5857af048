/// \file
/// \brief Reads the exchange with a controller out of captured packets.
#ifndef CAPTURE_PCAP_CAPTURE_READER_H
#define CAPTURE_PCAP_CAPTURE_READER_H

#include "capture/capture_entry.h"
#include "capture/pcap_fields.h"
#include "runtime/link/link.h"

namespace plc
{

/// What packets do not tell.
struct PcapReading {
    int controllerPort = modbusPort;
    FrameFormat format = FrameFormat::ModbusTcp;
    int timeoutMs = 300; ///< a reply that came later was not waited for
};

/// Any bytes will do: what is malformed is an error of the result, with the number of the byte. Packets that
/// are no TCP to or from the controller's port are skipped. A last packet that was cut is left out, with a
/// note.
CaptureEnd parsePcapCapture(const QByteArray& bytes, const PcapReading& reading, const CaptureSink& sink);

} // namespace plc

#endif
