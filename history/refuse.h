// SPDX-License-Identifier: MIT
/// \file
/// \brief How the functions of this folder tell what is wrong with a file.
#ifndef HISTORY_REFUSE_H
#define HISTORY_REFUSE_H

#include <QString>

#include <stdexcept>

namespace plc
{

/// \param message for people: what is wrong, and what to do
[[noreturn]] inline void refuseFile(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

} // namespace plc

#endif
