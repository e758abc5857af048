// SPDX-License-Identifier: MIT
#include "capture/tcp_stream.h"

#include <algorithm>

namespace plc
{

namespace
{

const std::size_t mostWaiting = 32; // segments

/// Sequence numbers begin again at 0. \return how far \a sequence is behind \a from; negative: before it
qint32 distance(quint32 from, quint32 sequence)
{
    return static_cast<qint32>(sequence - from);
}

} // namespace

void TcpStream::begin(quint32 sequence)
{
    m_hasBegun = true;
    m_next = sequence;
    m_waiting.clear();
}

QByteArray TcpStream::add(quint32 sequence, const QByteArray& bytes)
{
    m_hasJumped = false;
    if (bytes.isEmpty())
        return QByteArray();
    if (!m_hasBegun)
        begin(sequence);
    if (distance(m_next, sequence) <= 0) {
        const QByteArray first = take({sequence, bytes});
        return first + takeWaiting();
    }
    m_waiting.push_back({sequence, QByteArray(bytes.constData(), bytes.size())});
    if (m_waiting.size() < mostWaiting)
        return QByteArray();
    jump();
    return takeWaiting();
}

/// \return what is new of a piece that does not begin behind the next byte
QByteArray TcpStream::take(const Piece& piece)
{
    const quint32 known = m_next - piece.sequence;
    const bool isOld = known >= static_cast<quint32>(piece.bytes.size());
    const QByteArray fresh = isOld ? QByteArray() : piece.bytes.mid(static_cast<int>(known));
    m_next += static_cast<quint32>(fresh.size());
    return fresh;
}

QByteArray TcpStream::takeWaiting()
{
    QByteArray bytes;
    const auto isDue = [this](const Piece& piece) { return distance(m_next, piece.sequence) <= 0; };
    for (auto due = m_waiting.begin();
         (due = std::find_if(m_waiting.begin(), m_waiting.end(), isDue)) != m_waiting.end();) {
        bytes += take(*due);
        m_waiting.erase(due);
    }
    return bytes;
}

void TcpStream::jump()
{
    const auto nearest =
        std::min_element(m_waiting.begin(), m_waiting.end(), [this](const Piece& a, const Piece& b) {
            return distance(m_next, a.sequence) < distance(m_next, b.sequence);
        });
    m_next = nearest->sequence;
    m_hasJumped = true;
}

} // namespace plc
