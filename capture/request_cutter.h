// SPDX-License-Identifier: MIT
/// \file
/// \brief Requests out of a stream of bytes to the controller.
#ifndef CAPTURE_REQUEST_CUTTER_H
#define CAPTURE_REQUEST_CUTTER_H

#include "runtime/model/frame_format.h"

#include <QByteArray>

#include <memory>

namespace plc
{

/// One for each dialect. Any bytes will do.
class RequestCutter
{
public:
    virtual ~RequestCutter() = default;

    /// \param bytes that were sent at once
    virtual void append(const QByteArray& bytes) = 0;

    /// \return the next whole request; empty when there is none (yet)
    virtual QByteArray next() = 0;

    /// Bytes were seen that no request can have; nothing more is taken until reset().
    virtual bool outOfStep() const = 0;

    /// Forgets everything, for a new connection.
    virtual void reset() = 0;
};

std::unique_ptr<RequestCutter> requestCutterFor(FrameFormat format);

} // namespace plc

#endif
