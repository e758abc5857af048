// SPDX-License-Identifier: MIT
/// \file
/// \brief Whether bytes are text.
#ifndef RUNTIME_MODEL_UTF8_H
#define RUNTIME_MODEL_UTF8_H

#include <QByteArray>

namespace plc
{

/// \return the place of the first byte that begins no character of UTF-8, as the standard has it: none is longer than
///         it has to be, beyond U+10FFFF or half of one; -1 where there is none
int firstNotUtf8(const QByteArray& bytes);

} // namespace plc

#endif
