// SPDX-License-Identifier: MIT
#include "runtime/link/dropped_reply.h"

namespace plc
{

QString dropReasonWords(DropReason reason)
{
    switch (reason) {
    case DropReason::Late:
        return QStringLiteral("late: it answers an earlier request");
    case DropReason::Doubled:
        return QStringLiteral("doubled: its request was answered before");
    case DropReason::WrongUnit:
        return QStringLiteral("from another station than the one asked");
    case DropReason::WrongFunction:
        return QStringLiteral("to another function than the one asked for");
    case DropReason::WrongArea:
        return QStringLiteral("of another area than the one asked for");
    case DropReason::WrongSize:
        return QStringLiteral("with another size than what was asked for");
    case DropReason::WrongElements:
        return QStringLiteral("for other elements than those written");
    }
    return QString();
}

void DropCounts::count(DropReason reason)
{
    switch (reason) {
    case DropReason::Late:
        ++late;
        break;
    case DropReason::Doubled:
        ++doubled;
        break;
    case DropReason::WrongUnit:
        ++wrongUnit;
        break;
    case DropReason::WrongFunction:
        ++wrongFunction;
        break;
    case DropReason::WrongArea:
    case DropReason::WrongSize:
    case DropReason::WrongElements:
        ++wrongPlace;
        break;
    }
}

} // namespace plc
