// SPDX-License-Identifier: MIT
/// \file
/// \brief Numbers of things in messages.
#ifndef RUNTIME_MODEL_COUNTED_H
#define RUNTIME_MODEL_COUNTED_H

#include <QString>

namespace plc
{

/// \return "1 value" or "2 values"; \a several where it is not \a one with an s
inline QString counted(qint64 number, const char* one, const char* several = nullptr)
{
    QString text = QString::number(number) + QLatin1Char(' ');
    if (number == 1)
        return text + QLatin1String(one);
    return several != nullptr ? text + QLatin1String(several) : text + QLatin1String(one) + QLatin1Char('s');
}

} // namespace plc

#endif
