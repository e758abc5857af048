// SPDX-License-Identifier: MIT
/// \file
/// \brief What ends a call out of C, with the status that it returns.
#ifndef RUNTIME_C_REFUSAL_H
#define RUNTIME_C_REFUSAL_H

#include "runtime/c/plcruntime.h"

#include <QString>

#include <stdexcept>

namespace plc
{

/// Thrown inside the library only; its words are what plcruntime_last_error() returns.
class Refusal : public std::runtime_error
{
public:
    Refusal(plcruntime_status status, const QString& words)
        : std::runtime_error(words.toStdString()), m_status(status)
    {
    }

    plcruntime_status status() const { return m_status; }

private:
    plcruntime_status m_status;
};

} // namespace plc

#endif
