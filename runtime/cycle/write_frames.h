// SPDX-License-Identifier: MIT
/// \file
/// \brief The frames that the driver builds for a write, without a controller.
#ifndef RUNTIME_CYCLE_WRITE_FRAMES_H
#define RUNTIME_CYCLE_WRITE_FRAMES_H

#include "runtime/model/settings.h"
#include "runtime/model/variable.h"

#include <QByteArray>

#include <vector>

namespace plc
{

struct WriteFrame {
    QByteArray frame; ///< as the driver built it, number 0

    /// True for a bit inside a word, whose word is read before: the other bits of this frame are those that come
    /// back then, and 0 here.
    bool completesRead = false;
};

/// Lets the driver go through a write, without a link. There must be no Runtime meanwhile, because the driver's
/// state is one per process.
/// \param variable its station filled in, and nothing against it and \a values (writeRefusal())
/// \return the frames in the order in which they would go out
/// \throws std::runtime_error when the driver cannot be loaded
std::vector<WriteFrame> framesOfWrite(const Settings& settings, const Variable& variable,
                                      const std::vector<quint32>& values);

} // namespace plc

#endif
