// SPDX-License-Identifier: MIT
/// \file
/// \brief Replies that did not belong to the request, and why.
#ifndef RUNTIME_LINK_DROPPED_REPLY_H
#define RUNTIME_LINK_DROPPED_REPLY_H

#include "runtime/export.h"

#include <QByteArray>
#include <QString>

namespace plc
{

enum class DropReason {
    Late,          ///< the reply to an earlier request that was given up
    Doubled,       ///< a second reply to a request that was answered
    WrongUnit,     ///< from another station than the one asked
    WrongFunction, ///< to another function than the one asked for
    WrongArea,     ///< remote frames: of another area than the one asked for
    WrongSize,     ///< remote frames: longer or shorter than what was asked for
    WrongElements  ///< remote frames: names other elements than those written
};

/// \return the reason in words
PLCRUNTIME_API QString dropReasonWords(DropReason reason);

struct PLCRUNTIME_API DropCounts {
    int late = 0;
    int doubled = 0;
    int wrongUnit = 0;
    int wrongFunction = 0;
    int wrongPlace = 0; ///< wrong area, size or elements of a remote reply

    void count(DropReason reason);
    int total() const { return late + doubled + wrongUnit + wrongFunction + wrongPlace; }
};

struct DroppedReply {
    QByteArray reply;
    DropReason reason;
};

} // namespace plc

#endif
