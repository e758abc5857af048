// SPDX-License-Identifier: MIT
#include "panel/session/waiting.h"

namespace plc
{

QString progressText(const QString& what, const Runtime& runtime)
{
    if (!runtime.linkState().connected)
        return QStringLiteral("%1: waiting for a connection").arg(what);
    return QStringLiteral("%1: %2 requests so far").arg(what).arg(runtime.statistics().exchanges);
}

} // namespace plc
