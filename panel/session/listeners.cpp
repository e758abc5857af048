// SPDX-License-Identifier: MIT
#include "panel/session/listeners.h"

#include "capture/capture.h"
#include "panel/session/trace.h"
#include "panel/terminal/output.h"

#include <atomic>

namespace plc
{

namespace
{

std::atomic<bool> failed{false};

void complainOfCapture(const QString& words)
{
    failed = true;
    complain(words);
}

} // namespace

Listeners listenersFor(bool trace, const QString& captureTo, const Settings& settings)
{
    Listeners listeners;
    if (trace)
        listeners.exchanges = traceToStandardError();
    listeners.bytes = plc::captureTo(captureTo, settings, complainOfCapture);
    return listeners;
}

bool captureFailed()
{
    return failed;
}

} // namespace plc
