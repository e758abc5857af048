// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver's request that a captured frame was built for.
#ifndef CAPTURE_REBUILT_REQUEST_H
#define CAPTURE_REBUILT_REQUEST_H

#include "runtime/cycle/driver_blocks.h"
#include "runtime/model/frame_format.h"

#include <memory>
#include <optional>
#include <vector>

namespace plc
{

struct RebuiltRequest {
    bool isWrite = false;
    RW_VAR request;
};

/// One for each dialect.
class RequestRebuilder
{
public:
    virtual ~RequestRebuilder() = default;

    /// Any bytes will do. \return nothing when the driver builds no such frame
    virtual std::optional<RebuiltRequest> rebuild(const QByteArray& frame) const = 0;
};

/// A frame of Modbus TCP names coils and registers, and areas overlap there. So a frame is rebuilt as the
/// block that the driver makes of the variables, if it is one; else in the area of a variable that it
/// touches; else in the area whose beginning is the nearest in front of it. A remote frame says itself what it
/// asks for.
/// \param variables stations filled in \param blocks that the driver makes of them
std::unique_ptr<RequestRebuilder> requestRebuilderFor(FrameFormat format, std::vector<Variable> variables,
                                                      const std::vector<DriverBlock>& blocks);

} // namespace plc

#endif
