// SPDX-License-Identifier: MIT
#include "runtime/link/modbus_matcher.h"

#include "runtime/modbus/frame_fields.h"

#include <algorithm>

namespace plc
{

namespace
{
const int highestNumber = 0xFFFF;
const int noNumber = 0;
} // namespace

QByteArray ModbusMatcher::prepare(const QByteArray& frame, int)
{
    // The last request's bytes are used again where nobody holds them any more.
    if (m_request.size() != frame.size())
        m_request.resize(frame.size());
    std::copy(frame.begin(), frame.end(), m_request.data());
    // A device that does not echo the number answers with 0, which must not look like a match.
    if (frame.size() >= headerToLength)
        putWord(&m_request, numberOffset, m_number == highestNumber ? 1 : m_number + 1);
    await();
    return m_request;
}

void ModbusMatcher::expect(const QByteArray& sentFrame, int)
{
    m_request = sentFrame;
    await();
}

void ModbusMatcher::await()
{
    m_isAnswered = m_request.isEmpty();
    m_number = wordAt(m_request, numberOffset);
    if (m_answered == m_number) // numbers come again
        m_answered = noNumber;
}

bool ModbusMatcher::accept(QByteArray* reply, DropReason* reason)
{
    if (!fits(*reply, reason)) {
        m_owed.came(*reply);
        return false;
    }
    m_answered = m_number;
    m_isAnswered = true;
    putWord(reply, numberOffset, noNumber);
    return true;
}

bool ModbusMatcher::acceptAlone(QByteArray* reply)
{
    DropReason reason = DropReason::Late;
    return !m_owed.areThere() && accept(reply, &reason);
}

bool ModbusMatcher::fits(const QByteArray& reply, DropReason* reason) const
{
    const int number = wordAt(reply, numberOffset);
    const int function = byteAt(reply, functionOffset) & ~exceptionFlag;
    if (number == m_answered && number != noNumber)
        *reason = DropReason::Doubled;
    else if (number != m_number || m_isAnswered)
        *reason = DropReason::Late;
    else if (byteAt(reply, unitOffset) != byteAt(m_request, unitOffset))
        *reason = DropReason::WrongUnit;
    else if (function != byteAt(m_request, functionOffset))
        *reason = DropReason::WrongFunction;
    else
        return reply.size() > functionOffset;
    return false;
}

/// The rest of the late reply is then behind it, or it is inside.
bool ModbusMatcher::isMixed(const QByteArray& reply, bool isFollowed) const
{
    return m_owed.areThere() && (isFollowed || m_owed.beginInside(reply));
}

} // namespace plc
