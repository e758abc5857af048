// SPDX-License-Identifier: MIT
/// \file
/// \brief What a Modbus TCP reply has against it although it is the answer to the request.
#ifndef RUNTIME_MODBUS_REPLY_FAULT_H
#define RUNTIME_MODBUS_REPLY_FAULT_H

#include "runtime/model/failure.h"

#include <QByteArray>
#include <QString>

namespace plc
{

/// The driver judges a reply by its length alone. So a refusal that is as long as the answer would be, an echo of
/// another address, value or quantity, and a byte count that is not that of the quantity are found here.
/// \param reply with the unit and function of \a request; empty when there is none
/// \return None also for a reply whose length the driver will find to be wrong
FailureKind replyFault(const QByteArray& request, const QByteArray& reply);

/// The same of remote frames. A write's reply that names other elements is none of these: without a number, nothing
/// says that it is the answer, so the link does not match it.
FailureKind remoteReplyFault(const QByteArray& request, const QByteArray& reply);

/// \return in words what replyFault() found; empty for None and Exception
QString replyFaultWords(FailureKind fault);

/// \return to hand to the driver in place of a reply that has something against it: no reply has its length
QByteArray replyOfWrongLength();

} // namespace plc

#endif
