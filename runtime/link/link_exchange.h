// SPDX-License-Identifier: MIT
/// \file
/// \brief What the link tells: how the connection is, and what one exchange over it brought.
#ifndef RUNTIME_LINK_LINK_EXCHANGE_H
#define RUNTIME_LINK_LINK_EXCHANGE_H

#include "runtime/link/dropped_reply.h"
#include "runtime/model/clock.h"
#include "runtime/model/frame_format.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace plc
{

struct LinkState {
    bool connected = false;
    qint64 sinceMs = 0; ///< how long it has been so
    int connects = 0;   ///< connections made; every one after the first is a reconnect
    int untrusted = 0;  ///< connections dropped because the stream was no longer in step or full of other
                        ///< replies, or because with remote frames a late reply could still have come
    DropCounts dropped; ///< replies that did not belong to the request
    bool closedAtOnce =
        false;         ///< the last connection was closed by the controller, which had answered nothing on it
    QString lastError; ///< why the last connection was lost or could not be made
};

/// What one exchange brought.
struct LinkExchange {
    FrameFormat format = FrameFormat::ModbusTcp; ///< of the frame and the replies
    bool sent = false;                           ///< the frame went out
    QByteArray sentFrame;                        ///< as it went out, with its number; empty when it did not
    QByteArray reply;                  ///< one whole reply with the number put back to 0; empty: none came
    Clock::time_point repliedAt;       ///< when the reply was there
    qint64 replyMicroseconds = -1;     ///< from sending to the reply; -1: none came
    qint64 durationMs = 0;             ///< of the whole, connecting included
    std::vector<DroppedReply> dropped; ///< other replies that came meanwhile
    bool closed = false;               ///< the controller closed the connection instead of answering
    bool answeredBefore = false;       ///< something was answered before on the same connection
    bool outOfStep = false;            ///< what came is not in the form of the dialect
};

} // namespace plc

#endif
