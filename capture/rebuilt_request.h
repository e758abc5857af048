/// \file
/// \brief The driver's request that a captured frame was built for.
#ifndef CAPTURE_REBUILT_REQUEST_H
#define CAPTURE_REBUILT_REQUEST_H

#include "runtime/cycle/driver_blocks.h"

#include <map>
#include <optional>
#include <vector>

namespace plc
{

struct RebuiltRequest {
    bool isWrite = false;
    RW_VAR request;
};

/// A frame of Modbus TCP names coils and registers, and areas overlap there. So a frame is rebuilt as the
/// block that the driver makes of the variables, if it is one; else in the area of a variable that it
/// touches; else in the area whose beginning is the nearest in front of it.
class RequestRebuilder
{
public:
    /// Without variables.
    RequestRebuilder() = default;

    /// \param variables stations filled in \param blocks that the driver makes of them
    RequestRebuilder(std::vector<Variable> variables, const std::vector<DriverBlock>& blocks);

    /// Any bytes will do. \return nothing when the driver builds no such frame
    std::optional<RebuiltRequest> rebuild(const QByteArray& frame) const;

private:
    std::optional<RebuiltRequest> rebuildIn(int area, const QByteArray& frame) const;
    std::vector<int> areasFor(const QByteArray& frame) const;

    std::vector<Variable> m_variables;
    std::map<QByteArray, RW_VAR> m_blocks; // by frame without the number
};

/// The same for a remote frame, which says itself what it asks for. Any bytes will do.
std::optional<RebuiltRequest> rebuildRemote(const QByteArray& frame);

} // namespace plc

#endif
