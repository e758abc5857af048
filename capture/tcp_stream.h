// SPDX-License-Identifier: MIT
/// \file
/// \brief The bytes of one direction of a TCP connection in their order.
#ifndef CAPTURE_TCP_STREAM_H
#define CAPTURE_TCP_STREAM_H

#include <QByteArray>

#include <vector>

namespace plc
{

/// Repeated segments are taken once, those out of order when their turn comes. What is missing for good is
/// jumped over when too much waits behind it.
class TcpStream
{
public:
    /// The connection begins, with this sequence number.
    void begin(quint32 sequence);

    /// Where no beginning was seen the first segment is taken for it.
    /// \return what is in order now
    QByteArray add(quint32 sequence, const QByteArray& bytes);

    /// \return true when bytes are missing in front of what add() returned last
    bool hasJumped() const { return m_hasJumped; }

private:
    struct Piece {
        quint32 sequence = 0;
        QByteArray bytes;
    };

    QByteArray take(const Piece& piece);
    QByteArray takeWaiting();
    void jump();

    bool m_hasBegun = false;
    bool m_hasJumped = false;
    quint32 m_next = 0; // sequence number of the next byte
    std::vector<Piece> m_waiting;
};

} // namespace plc

#endif
