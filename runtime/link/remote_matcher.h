/// \file
/// \brief Which remote reply belongs to which remote request.
#ifndef RUNTIME_LINK_REMOTE_MATCHER_H
#define RUNTIME_LINK_REMOTE_MATCHER_H

#include "runtime/link/reply_matcher.h"

namespace plc
{

/// Remote frames carry no number. A reply fits the last request by station, area and size; that to a write
/// also by element and count. That does not tell a late reply from the answer to an equal request, nor to a
/// read of as many other elements of the area: whoever uses this has to make sure that nothing late can come,
/// see Link.
class RemoteMatcher
{
public:
    /// \param replySize bytes that the reply must have
    void expect(const QByteArray& frame, int replySize);

    /// \param reason receives why \a reply does not fit
    /// \return true once for each request at most
    bool accept(const QByteArray& reply, DropReason* reason);

private:
    bool fits(const QByteArray& reply, DropReason* reason) const;

    QByteArray m_request; // empty once it was answered
    int m_replySize = 0;
};

} // namespace plc

#endif
