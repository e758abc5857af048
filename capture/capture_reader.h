/// \file
/// \brief Reads a file with a capture, of either format.
#ifndef CAPTURE_CAPTURE_READER_H
#define CAPTURE_CAPTURE_READER_H

#include "capture/pcap_capture_reader.h"

namespace plc
{

/// The content says which format it is. A file that cannot be read, or is larger than a gigabyte, is an error
/// of the result.
CaptureEnd readCapture(const QString& path, const PcapReading& reading, const CaptureSink& sink);

/// The same for bytes. Any will do.
CaptureEnd parseCapture(const QByteArray& bytes, const PcapReading& reading, const CaptureSink& sink);

/// \return the settings that were captured with it, as far as it holds any and can be read
std::optional<Settings> capturedSettings(const QString& path);

} // namespace plc

#endif
