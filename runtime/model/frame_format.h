// SPDX-License-Identifier: MIT
/// \file
/// \brief The two dialects that go over a link.
///
/// Each room has one interface for what differs between them, and one function that chooses by this word:
/// words and fields (runtime/modbus/dialect.h), matching (runtime/link/reply_matcher.h), captures
/// (capture/request_cutter.h, capture/rebuilt_request.h).
#ifndef RUNTIME_MODEL_FRAME_FORMAT_H
#define RUNTIME_MODEL_FRAME_FORMAT_H

#include "runtime/model/settings.h"

namespace plc
{

enum class FrameFormat {
    ModbusTcp, ///< numbered, in the form of the standard
    Remote     ///< the driver's remote frames, which carry no number
};

inline FrameFormat frameFormatOf(const Settings& settings)
{
    return settings.remoteMode ? FrameFormat::Remote : FrameFormat::ModbusTcp;
}

} // namespace plc

#endif
