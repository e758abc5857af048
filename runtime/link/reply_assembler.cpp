// SPDX-License-Identifier: MIT
#include "runtime/link/reply_assembler.h"

#include "runtime/modbus/frame_fields.h"

namespace plc
{

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
    if (wordAt(m_buffer, protocolOffset) != 0 || length < shortestLength || length > longestLength) {
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
