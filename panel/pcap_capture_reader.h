/// \file
/// \brief Reads the exchange with a controller out of captured packets.
#ifndef PANEL_PCAP_CAPTURE_READER_H
#define PANEL_PCAP_CAPTURE_READER_H

#include "panel/capture_entry.h"
#include "panel/link.h"
#include "panel/pcap_fields.h"

namespace panel
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

} // namespace panel

#endif
