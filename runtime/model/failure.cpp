// SPDX-License-Identifier: MIT
#include "runtime/model/failure.h"

namespace plc
{

bool isUnsent(FailureKind kind)
{
    switch (kind) {
    case FailureKind::Invalid:
    case FailureKind::NotRunning:
    case FailureKind::NotTried:
    case FailureKind::StationOff:
    case FailureKind::NotTaken:
    case FailureKind::Discarded:
    case FailureKind::Replaced:
    case FailureKind::Purged:
        return true;
    case FailureKind::None:
    case FailureKind::NotConnected: // an earlier try may have gone out
    case FailureKind::NoReply:
    case FailureKind::LateReply:
    case FailureKind::OtherUnit:
    case FailureKind::OtherFunction:
    case FailureKind::OtherNumber:
    case FailureKind::OtherElements:
    case FailureKind::NoProtocol:
    case FailureKind::Closed:
    case FailureKind::ClosedAtOnce:
    case FailureKind::Exception:
    case FailureKind::Acknowledged:
    case FailureKind::BadReply:
    case FailureKind::OtherAddress:
    case FailureKind::OtherValue:
    case FailureKind::OtherQuantity:
    case FailureKind::OtherByteCount:
    case FailureKind::Stopped:
    case FailureKind::OutOfStep:
    case FailureKind::NotReported:
        return false;
    }
    return false;
}

} // namespace plc
