#include "panel/listeners.h"

#include "panel/capture.h"
#include "panel/trace.h"

namespace panel
{

Listeners listenersFor(const Options& options)
{
    Listeners listeners;
    if (options.trace)
        listeners.exchanges = traceToStandardError();
    listeners.bytes = captureTo(options.captureTo, options.settings);
    return listeners;
}

} // namespace panel
