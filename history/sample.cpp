// SPDX-License-Identifier: MIT
#include "history/sample.h"

namespace plc
{

QString sampleStateWord(SampleState state)
{
    switch (state) {
    case SampleState::Fresh:
        return QStringLiteral("fresh");
    case SampleState::NeverRead:
        return QStringLiteral("never read");
    case SampleState::Stale:
        return QStringLiteral("stale");
    case SampleState::Failed:
        return QStringLiteral("failed");
    case SampleState::StationOff:
        return QStringLiteral("station off");
    case SampleState::NotLogged:
        return QStringLiteral("not logged");
    case SampleState::Lost:
        return QStringLiteral("lost");
    }
    return QString();
}

} // namespace plc
