// SPDX-License-Identifier: MIT
#include "runtime/link/remote_matcher.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"

namespace plc
{

namespace
{

bool namesSameElements(const QByteArray& reply, const QByteArray& write)
{
    return wordAt(reply, remoteReplyElementOffset) == wordAt(write, remoteElementOffset + 2) &&
           wordAt(reply, remoteReplyCountOffset) == wordAt(write, remoteCountOffset);
}

} // namespace

QByteArray RemoteMatcher::prepare(const QByteArray& frame, int replySize)
{
    expect(frame, replySize);
    return frame;
}

void RemoteMatcher::expect(const QByteArray& sentFrame, int replySize)
{
    m_request = sentFrame;
    m_replySize = replySize;
}

bool RemoteMatcher::accept(QByteArray* reply, DropReason* reason)
{
    if (!fits(*reply, reason))
        return false;
    m_request.clear();
    return true;
}

bool RemoteMatcher::fits(const QByteArray& reply, DropReason* reason) const
{
    const bool isWrite = m_request.size() > remoteReadSize;
    if (m_request.isEmpty())
        *reason = DropReason::Doubled;
    else if (byteAt(reply, unitOffset) != byteAt(m_request, remoteStationOffset))
        *reason = DropReason::WrongUnit;
    else if (byteAt(reply, remoteReplyAreaOffset) != wordAt(m_request, remoteAreaOffset))
        *reason = DropReason::WrongArea;
    else if (reply.size() != m_replySize)
        *reason = DropReason::WrongSize;
    else if (isWrite && !namesSameElements(reply, m_request))
        *reason = DropReason::WrongElements;
    else
        return true;
    return false;
}

QString RemoteMatcher::distrustAfter(const StreamEnd& end) const
{
    if (!end.answered)
        return QStringLiteral("there was no reply in time, and remote frames do not tell a late one");
    if (end.bytesLeft || end.othersCame)
        return QStringLiteral("the controller sent more than the reply");
    return QString();
}

} // namespace plc
