// SPDX-License-Identifier: MIT
#include "runtime/cycle/send_pause.h"

#include "runtime/modbus/protocol.h"

#include <algorithm>

namespace plc
{

namespace
{

const int firstShare = 4; // of the time-out, that the first pause takes

} // namespace

int SendPause::after(int exception)
{
    if (exception != DeviceBusy) {
        m_busyMs = 0;
        return m_gapMs;
    }
    const int next = m_busyMs == 0 ? m_longestMs / firstShare : 2 * m_busyMs;
    m_busyMs = std::clamp(next, 1, m_longestMs);
    return std::max(m_busyMs, m_gapMs);
}

} // namespace plc
