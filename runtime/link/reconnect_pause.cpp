// SPDX-License-Identifier: MIT
#include "runtime/link/reconnect_pause.h"

#include <algorithm>

namespace plc
{

namespace
{
const int firstPauseMs = 100;
const int longestPauseMs = 5000;
} // namespace

int ReconnectPause::next()
{
    const int pause = m_nextMs;
    m_nextMs = pause == 0 ? firstPauseMs : std::min(2 * pause, longestPauseMs);
    return pause;
}

void ReconnectPause::reset()
{
    m_nextMs = 0;
}

} // namespace plc
