// SPDX-License-Identifier: MIT
/// \file
/// \brief What carries bytes to a controller and back.
#ifndef RUNTIME_LINK_TRANSPORT_H
#define RUNTIME_LINK_TRANSPORT_H

#include "runtime/link/link_tap.h"

#include <QByteArray>
#include <QString>

namespace plc
{

/// One connection at a time to one controller. It is made and used on one thread, the communication thread.
/// No call lasts much longer than the time that it is given, and none throws.
class Transport
{
public:
    virtual ~Transport() = default;

    /// Closes what is open, and tries to connect for \a timeoutMs at most.
    /// \return true when there is a connection, else see errorString()
    virtual bool connect(int timeoutMs) = 0;

    /// Makes connect(), now and later, end soon. Any thread.
    virtual void stop() {}

    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    /// \return true when all of \a bytes are on their way; else it is closed, see errorString()
    virtual bool send(const QByteArray& bytes, int timeoutMs) = 0;

    /// Waits for \a timeoutMs at most when nothing has arrived; not at all for 0, which is a look whether bytes have
    /// come or the other side has closed. Closes when it has, or when it is found to be gone.
    /// \param bytes receives what has arrived, in the room that it has where nobody else holds that
    virtual void receive(int timeoutMs, QByteArray* bytes) = 0;

    /// What it connects to, as it was told.
    virtual LinkEnd target() const = 0;

    /// The connection at this side, and at the other.
    virtual LinkEnd ownEnd() const = 0;
    virtual LinkEnd otherEnd() const = 0;

    /// Why there is no connection, in the system's words.
    virtual QString errorString() const = 0;
};

} // namespace plc

#endif
