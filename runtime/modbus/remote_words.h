// SPDX-License-Identifier: MIT
/// \file
/// \brief Remote frames and replies in words.
#ifndef RUNTIME_MODBUS_REMOTE_WORDS_H
#define RUNTIME_MODBUS_REMOTE_WORDS_H

#include <QByteArray>
#include <QString>

namespace plc
{

/// \return what a request asks for, e.g. "station 1: read 9:100x2"; says so when it is malformed
QString remoteRequestWords(const QByteArray& frame);

/// \return what \a reply to \a frame says, e.g. "station 1: 4660 7"; "no reply" when it is empty
QString remoteReplyWords(const QByteArray& frame, const QByteArray& reply);

} // namespace plc

#endif
