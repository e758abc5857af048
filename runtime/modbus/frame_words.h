// SPDX-License-Identifier: MIT
/// \file
/// \brief Frames and replies for people: bytes in hex, meaning in words.
#ifndef RUNTIME_MODBUS_FRAME_WORDS_H
#define RUNTIME_MODBUS_FRAME_WORDS_H

#include <QByteArray>
#include <QString>

namespace plc
{

/// \return "00 01 FC"
QString hexText(const QByteArray& bytes);

/// \return what a request asks for, e.g. "unit 1: read 10 coils from 64517"; says so when it is malformed
QString requestWords(const QByteArray& frame);

/// \return what \a reply to \a frame says, e.g. "unit 1: registers 4660 7"; "no reply" when it is empty
QString replyWords(const QByteArray& frame, const QByteArray& reply);

} // namespace plc

#endif
