// SPDX-License-Identifier: MIT
/// \file
/// \brief Who wants to see every byte that goes over the link.
#ifndef RUNTIME_LINK_LINK_TAP_H
#define RUNTIME_LINK_LINK_TAP_H

#include "runtime/export.h"

#include <QByteArray>
#include <QString>

namespace plc
{

/// An address as the system writes it, and a TCP port.
struct LinkEnd {
    QString address;
    int port = 0;
};

/// All functions are called on the communication thread, at the time of what they tell, and must not throw.
class PLCRUNTIME_API LinkTap
{
public:
    virtual ~LinkTap() = default;

    /// A connection was made; what follows belongs to it.
    virtual void opened(const LinkEnd& panel, const LinkEnd& controller) = 0;

    /// The connection came to its end, or, before there was one, could not be made.
    virtual void closed(const QString& why) = 0;

    /// A frame, with its number, is on its way.
    virtual void sent(const QByteArray& frame) = 0;

    /// A frame, without a number, stays here because there is no connection.
    virtual void notSent(const QByteArray& frame, const QString& why) = 0;

    /// Bytes as they arrived: parts of replies, or several.
    virtual void received(const QByteArray& bytes) = 0;

    /// The frame sent last is not waited for any longer.
    virtual void timedOut() = 0;
};

} // namespace plc

#endif
