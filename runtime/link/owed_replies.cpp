// SPDX-License-Identifier: MIT
#include "runtime/link/owed_replies.h"

#include "runtime/modbus/frame_fields.h"

#include <algorithm>

namespace plc
{

namespace
{

const std::size_t mostKept = 64; // a dead station behind a gateway is owed for ever

const int headSize = functionOffset + 1;

// A reply has 254 bytes at most behind its length field, so the upper byte of the length is 0.
const int sameBytes = lengthOffset + 1;

/// \return true when the reply to the request of this head may begin at \a offset of \a bytes
bool beginsAt(const QByteArray& bytes, int offset, const QByteArray& head)
{
    return std::equal(head.begin(), head.begin() + sameBytes, bytes.begin() + offset) &&
           byteAt(bytes, offset + unitOffset) == byteAt(head, unitOffset) &&
           (byteAt(bytes, offset + functionOffset) & ~exceptionFlag) == byteAt(head, functionOffset);
}

} // namespace

void OwedReplies::add(const QByteArray& request)
{
    m_heads.push_back(request.left(headSize));
    if (m_heads.size() > mostKept)
        m_heads.pop_front();
}

void OwedReplies::came(const QByteArray& reply)
{
    const auto sameNumber = [&reply](const QByteArray& head) {
        return wordAt(head, numberOffset) == wordAt(reply, numberOffset);
    };
    m_heads.erase(std::remove_if(m_heads.begin(), m_heads.end(), sameNumber), m_heads.end());
}

bool OwedReplies::beginInside(const QByteArray& reply) const
{
    for (int offset = headerToLength; offset + headSize <= reply.size(); ++offset) {
        for (const QByteArray& head : m_heads) {
            if (beginsAt(reply, offset, head))
                return true;
        }
    }
    return false;
}

} // namespace plc
