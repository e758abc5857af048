// SPDX-License-Identifier: MIT
#include "panel/session/waiting.h"

#include "runtime/model/counted.h"

namespace plc
{

QString progressText(const QString& what, const Runtime& runtime)
{
    if (!runtime.linkState().connected)
        return QStringLiteral("%1: waiting for a connection").arg(what);
    return QStringLiteral("%1: %2 so far").arg(what, counted(runtime.statistics().exchanges, "request"));
}

} // namespace plc
