// SPDX-License-Identifier: MIT
/// \file
/// \brief Which Modbus TCP reply belongs to which request.
#ifndef RUNTIME_LINK_MODBUS_MATCHER_H
#define RUNTIME_LINK_MODBUS_MATCHER_H

#include "runtime/link/owed_replies.h"
#include "runtime/link/reply_matcher.h"

namespace plc
{

/// The driver's frames all carry transaction number 0, and the driver judges a reply by its length alone.
/// So the copy that is sent is numbered, and only the reply with the number, unit and function of the last
/// request is passed on. A Modbus exception to that function is a matching reply.
///
/// So a reply that comes late is known and does no harm; one that was cut and filled up with the bytes of a
/// late one is known too, see OwedReplies.
class ModbusMatcher final : public ReplyMatcher
{
public:
    /// \return \a frame with the next number, never 0, in its header
    QByteArray prepare(const QByteArray& frame, int replySize = 0) override;

    void expect(const QByteArray& sentFrame, int replySize = 0) override;

    /// A reply that matches has its number put back to 0.
    bool accept(QByteArray* reply, DropReason* reason) override;

    bool acceptAlone(QByteArray* reply) override;

    bool knowsLateReplies() const override { return true; }
    void connectedAnew() override { m_owed.reset(); }
    void gaveUp(const QByteArray& sentFrame) override { m_owed.add(sentFrame); }
    bool isMixed(const QByteArray& reply, bool isFollowed) const override;

private:
    void await();
    bool fits(const QByteArray& reply, DropReason* reason) const;

    QByteArray m_request;
    bool m_isAnswered = true;
    int m_number = 0;
    int m_answered = 0;
    OwedReplies m_owed;
};

} // namespace plc

#endif
