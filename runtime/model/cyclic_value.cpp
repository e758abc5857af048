// SPDX-License-Identifier: MIT
#include "runtime/model/cyclic_value.h"

namespace plc
{

QString valueStateWord(ValueState state)
{
    switch (state) {
    case ValueState::NeverRead:
        return QStringLiteral("never read");
    case ValueState::StationOff:
        return QStringLiteral("station off");
    case ValueState::Failed:
        return QStringLiteral("failed");
    case ValueState::Stale:
        return QStringLiteral("stale");
    case ValueState::Unconfirmed:
        return QStringLiteral("unconfirmed");
    case ValueState::Fresh:
        return QStringLiteral("fresh");
    }
    return QString();
}

} // namespace plc
