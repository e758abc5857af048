// SPDX-License-Identifier: MIT
#include "runtime/link/reply_assembler.h"

#include "runtime/modbus/frame_fields.h"

namespace plc
{

namespace
{

/// \return false for a header that no reply can have
bool isPossible(const QByteArray& bytes, int length)
{
    return wordAt(bytes, protocolOffset) == 0 && length >= shortestLength && length <= longestLength;
}

} // namespace

bool ReplyAssembler::wouldBeWhole(const QByteArray& bytes) const
{
    if (bytes.size() < headerToLength + shortestLength || m_outOfStep || partial())
        return false;
    const int length = wordAt(bytes, lengthOffset);
    return isPossible(bytes, length) && bytes.size() == headerToLength + length;
}

void ReplyAssembler::append(const QByteArray& bytes)
{
    if (!m_outOfStep)
        m_buffer.append(bytes);
}

QByteArray ReplyAssembler::next()
{
    if (m_outOfStep || m_buffer.size() < headerToLength)
        return QByteArray();
    const int length = wordAt(m_buffer, lengthOffset);
    if (!isPossible(m_buffer, length)) {
        m_outOfStep = true;
        return QByteArray();
    }
    const int size = headerToLength + length;
    if (m_buffer.size() < size)
        return QByteArray();
    QByteArray reply;
    reply.swap(m_buffer);
    if (reply.size() > size) {
        m_buffer = reply.mid(size);
        reply.truncate(size);
    }
    return reply;
}

void ReplyAssembler::reset()
{
    m_buffer.clear();
    m_outOfStep = false;
}

} // namespace plc
