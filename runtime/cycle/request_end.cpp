// SPDX-License-Identifier: MIT
#include "runtime/cycle/request_end.h"

namespace plc
{

namespace
{

Failure purgedWith(Failure other)
{
    other.cause = other.kind;
    other.kind = FailureKind::Purged;
    return other;
}

Failure otherwise(FailureKind kind, const Failure& given)
{
    Failure failure(kind);
    failure.code = given.code;
    return failure;
}

} // namespace

Failure failureOf(RequestEnd end, const Failure& given)
{
    switch (end) {
    case RequestEnd::Done:
        return Failure();
    case RequestEnd::Failed:
        return given;
    case RequestEnd::Purged:
        return purgedWith(given);
    case RequestEnd::Discarded:
        return otherwise(FailureKind::Discarded, given);
    case RequestEnd::Replaced:
        return otherwise(FailureKind::Replaced, given);
    case RequestEnd::OutOfStep:
        break;
    }
    return otherwise(FailureKind::OutOfStep, given);
}

Failure stationOff(int station)
{
    Failure failure(FailureKind::StationOff);
    failure.station = station;
    return failure;
}

} // namespace plc
