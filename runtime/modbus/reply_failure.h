// SPDX-License-Identifier: MIT
/// \file
/// \brief What a request that was given up failed of.
#ifndef RUNTIME_MODBUS_REPLY_FAILURE_H
#define RUNTIME_MODBUS_REPLY_FAILURE_H

#include "runtime/model/failure.h"

#include <QByteArray>

namespace plc
{

/// \param code what the driver made of \a reply to a read, which is empty when none came within \a timeoutMs
/// \param fault of the reply, see Dialect::faultOf()
Failure replyFailure(int code, FailureKind fault, const QByteArray& reply, int timeoutMs);

/// \param code what the driver made of it \param why there is no connection, in words
Failure connectionFailure(int code, const QString& why);

} // namespace plc

#endif
