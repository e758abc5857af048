/// \file
/// \brief Why a request was given up, in words.
#ifndef RUNTIME_MODBUS_FAILURE_WORDS_H
#define RUNTIME_MODBUS_FAILURE_WORDS_H

#include <QByteArray>
#include <QString>

namespace plc
{

/// \param code what the driver made of \a reply, which is empty when none came within \a timeoutMs
QString failureWords(int code, const QByteArray& reply, int timeoutMs);

/// \param error why there is no connection
QString noConnectionWords(const QString& host, int port, const QString& error);

} // namespace plc

#endif
