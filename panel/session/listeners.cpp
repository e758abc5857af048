#include "panel/session/listeners.h"

#include "capture/capture.h"
#include "panel/session/trace.h"
#include "panel/terminal/output.h"

namespace plc
{

Listeners listenersFor(bool trace, const QString& captureTo, const Settings& settings)
{
    Listeners listeners;
    if (trace)
        listeners.exchanges = traceToStandardError();
    listeners.bytes = plc::captureTo(captureTo, settings, complain);
    return listeners;
}

} // namespace plc
