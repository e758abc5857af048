// SPDX-License-Identifier: MIT
/// \file
/// \brief What the link must know of a dialect: which reply belongs to which request, and what a connection is
///        worth after it.
#ifndef RUNTIME_LINK_REPLY_MATCHER_H
#define RUNTIME_LINK_REPLY_MATCHER_H

#include "runtime/link/dropped_reply.h"
#include "runtime/model/frame_format.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace plc
{

/// How an exchange left the stream of replies, which is in step.
struct StreamEnd {
    bool answered = false;
    bool bytesLeft = false;  ///< the beginning of a further reply
    bool othersCame = false; ///< replies that were dropped
};

class ReplyMatcher
{
public:
    virtual ~ReplyMatcher() = default;

    /// \param frame the next request, as the driver built it \param replySize bytes that its reply must have
    /// \return the frame as it is to be sent
    virtual QByteArray prepare(const QByteArray& frame, int replySize) = 0;

    /// The same for a request that was sent as it is.
    virtual void expect(const QByteArray& sentFrame, int replySize) = 0;

    /// \param reply a whole reply; when it matches, it is as the driver expects it then
    /// \param reason receives why it does not match
    /// \return true once for each request at most
    virtual bool accept(QByteArray* reply, DropReason* reason) = 0;

    /// The usual case at less cost: \a reply is all that came.
    /// \return true when accept() and isMixed() would have nothing against it and nothing has to be judged behind it;
    ///         then as after accept(). Else nothing has changed, and they are to be asked.
    virtual bool acceptAlone(QByteArray*) { return false; }

    /// False: a late reply may pass for the answer to a later request. So none may ever come on a connection that
    /// a request goes out on.
    virtual bool knowsLateReplies() const = 0;

    /// Nothing comes on the old connection any more.
    virtual void connectedAnew() {}

    /// The request that was sent as this frame was not answered in time; its reply may still come.
    virtual void gaveUp(const QByteArray&) {}

    /// \param isFollowed there are bytes behind it, or the stream is out of step behind it
    /// \return true when \a reply, which was accepted, may have been put together of two
    virtual bool isMixed(const QByteArray& reply, bool isFollowed) const;

    /// \return why the connection cannot be used for a further request; empty when it can
    virtual QString distrustAfter(const StreamEnd& end) const;
};

std::unique_ptr<ReplyMatcher> replyMatcherFor(FrameFormat format);

} // namespace plc

#endif
