/// \file
/// \brief Reads what JsonCapture wrote.
#ifndef CAPTURE_JSON_CAPTURE_READER_H
#define CAPTURE_JSON_CAPTURE_READER_H

#include "capture/capture_entry.h"

namespace plc
{

/// Any bytes will do: what is malformed is an error of the result, with the number of the line. A last line
/// that was cut is left out, with a note. Events and members that are not known are skipped.
CaptureEnd parseJsonCapture(const QByteArray& text, const CaptureSink& sink);

} // namespace plc

#endif
