// SPDX-License-Identifier: MIT
/// \file
/// \brief Replies that did not come in time and may still come on the same connection.
#ifndef RUNTIME_LINK_OWED_REPLIES_H
#define RUNTIME_LINK_OWED_REPLIES_H

#include <QByteArray>

#include <deque>

namespace plc
{

/// A gateway that cuts a reply short and then passes a late one on makes one stream of both: the late reply's
/// first bytes fill up the cut one, which then has the right number and length and wrong values. It is known
/// by the late reply's header in the midst of it; or, where that has no room, by what is left of the late
/// reply behind it.
class OwedReplies
{
public:
    /// \a request, with its number, was not answered in time. The last 64 are kept.
    void add(const QByteArray& request);

    /// A whole reply that was not the one waited for.
    void came(const QByteArray& reply);

    bool areThere() const { return !m_heads.empty(); }

    /// \return true when a reply that is owed begins inside \a reply, behind its length field
    bool beginInside(const QByteArray& reply) const;

    /// For a new connection: nothing comes on the old one any more.
    void reset() { m_heads.clear(); }

private:
    std::deque<QByteArray> m_heads; // of requests, which the replies repeat but for the length
};

} // namespace plc

#endif
