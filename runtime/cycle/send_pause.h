// SPDX-License-Identifier: MIT
/// \file
/// \brief How long the controller is left in peace before the next request.
#ifndef RUNTIME_CYCLE_SEND_PAUSE_H
#define RUNTIME_CYCLE_SEND_PAUSE_H

#include "runtime/model/settings.h"

namespace plc
{

/// A controller that says that it is busy gets a pause, a longer one each time that it says so in a row, so that
/// the tries of a request are not used up while it still is. No pause is longer than the wait for a reply, so a
/// busy controller never costs more time than a silent one. Any other gets the gap of the settings.
class SendPause
{
public:
    explicit SendPause(const Settings& settings) : m_gapMs(settings.gapMs), m_longestMs(settings.timeoutMs) {}

    /// After each try of a request. \param exception Modbus exception that it was answered with; 0: none
    /// \return ms until the next frame may go out
    int after(int exception);

private:
    const int m_gapMs;
    const int m_longestMs;
    int m_busyMs = 0; // the last pause of a busy controller
};

} // namespace plc

#endif
