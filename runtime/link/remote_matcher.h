// SPDX-License-Identifier: MIT
/// \file
/// \brief Which remote reply belongs to which remote request.
#ifndef RUNTIME_LINK_REMOTE_MATCHER_H
#define RUNTIME_LINK_REMOTE_MATCHER_H

#include "runtime/link/reply_matcher.h"

namespace plc
{

/// Remote frames carry no number, and go out as they are. A reply fits the last request by station, area and
/// size; that to a write also by element and count. That does not tell a late reply from the answer to an equal
/// request, nor to a read of as many other elements of the area. So the connection is dropped whenever
/// something late could still come on it, see Link.
class RemoteMatcher : public ReplyMatcher
{
public:
    QByteArray prepare(const QByteArray& frame, int replySize) override;
    void expect(const QByteArray& sentFrame, int replySize) override;
    bool accept(QByteArray* reply, DropReason* reason) override;
    bool knowsLateReplies() const override { return false; }
    QString distrustAfter(const StreamEnd& end) const override;

private:
    bool fits(const QByteArray& reply, DropReason* reason) const;

    QByteArray m_request; // empty once it was answered
    int m_replySize = 0;
};

} // namespace plc

#endif
