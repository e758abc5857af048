// SPDX-License-Identifier: MIT
/// \file
/// \brief Whole replies out of a stream of bytes.
#ifndef RUNTIME_LINK_REPLY_ASSEMBLER_H
#define RUNTIME_LINK_REPLY_ASSEMBLER_H

#include <QByteArray>

namespace plc
{

/// Cuts a TCP stream into Modbus TCP replies by the length field of their headers, however the stream was
/// cut on its way. A header that no reply can have means that the stream is out of step; nothing more is
/// taken from it until reset().
class ReplyAssembler
{
public:
    void append(const QByteArray& bytes);

    /// \return true when \a bytes, which have come and are not appended, are one reply and nothing else, and none
    ///         wait
    bool wouldBeWhole(const QByteArray& bytes) const;

    /// \return the next whole reply, header included; empty when there is none (yet)
    QByteArray next();

    /// Takes the stream for out of step, for reasons of the caller's.
    void distrust() { m_outOfStep = true; }

    /// A protocol identifier other than 0 or a length outside 2..254 was seen, or distrust() called.
    bool outOfStep() const { return m_outOfStep; }

    /// Bytes of a reply that is not whole yet are waiting.
    bool partial() const { return !m_buffer.isEmpty(); }

    /// Forgets everything, for a new connection.
    void reset();

private:
    QByteArray m_buffer;
    bool m_outOfStep = false;
};

} // namespace plc

#endif
