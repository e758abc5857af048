// SPDX-License-Identifier: MIT
/// \file
/// \brief What differs between Modbus TCP and remote frames for those who read them: words and fields.
#ifndef RUNTIME_MODBUS_DIALECT_H
#define RUNTIME_MODBUS_DIALECT_H

#include "runtime/model/failure.h"
#include "runtime/model/frame_format.h"

#include <QByteArray>
#include <QString>

namespace plc
{

/// Any bytes will do for every function.
class Dialect
{
public:
    virtual ~Dialect() = default;

    /// \return what a request asks for; says so when it is malformed
    virtual QString requestWords(const QByteArray& frame) const = 0;

    /// \return what \a reply to \a frame says; "no reply" when it is empty
    virtual QString replyWords(const QByteArray& frame, const QByteArray& reply) const = 0;

    /// \param reply that the link matched with \a request, as both went over the link
    /// \return what it has against it that its length need not show; None when that is nothing
    virtual FailureKind faultOf(const QByteArray& request, const QByteArray& reply) const = 0;

    /// \return the station that a request goes to
    virtual int stationOf(const QByteArray& frame) const = 0;

    /// False: nothing but its time tells which request a reply answers.
    virtual bool hasNumbers() const = 0;

    /// \return what of a request stays the same whenever it is sent
    virtual QByteArray withoutNumber(const QByteArray& frame) const = 0;

    /// \return \a reply with the number of \a sentFrame, where there are numbers
    virtual QByteArray withNumberOf(const QByteArray& sentFrame, const QByteArray& reply) const = 0;
};

/// \return for any number of threads
const Dialect& dialectOf(FrameFormat format);

} // namespace plc

#endif
