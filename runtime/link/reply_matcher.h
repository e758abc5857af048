/// \file
/// \brief Which reply belongs to which request.
#ifndef RUNTIME_LINK_REPLY_MATCHER_H
#define RUNTIME_LINK_REPLY_MATCHER_H

#include "runtime/link/dropped_reply.h"

#include <QByteArray>

namespace plc
{

/// The driver's frames all carry transaction number 0, and the driver judges a reply by its length alone.
/// So the copy that is sent is numbered, and only the reply with the number, unit and function of the last
/// request is passed on. A Modbus exception to that function is a matching reply.
class ReplyMatcher
{
public:
    /// \return \a frame with the next number, never 0, in its header
    QByteArray number(const QByteArray& frame);

    /// \param frame the next request, with the number that it has
    void expect(const QByteArray& frame);

    /// \param reply a whole reply; when it matches, its number is put back to 0
    /// \param reason receives why it does not match
    /// \return true once for each numbered request at most
    bool accept(QByteArray* reply, DropReason* reason);

private:
    bool fits(const QByteArray& reply, DropReason* reason) const;

    QByteArray m_request;
    int m_number = 0;
    int m_answered = 0;
};

} // namespace plc

#endif
