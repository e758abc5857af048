// SPDX-License-Identifier: MIT
/// \file
/// \brief The number that ties a death to its birth, bdSeq, and the file that it outlives restarts in.
#ifndef GATEWAY_SPARKPLUG_BIRTH_NUMBER_H
#define GATEWAY_SPARKPLUG_BIRTH_NUMBER_H

#include <QString>

namespace plc
{

class BirthNumber
{
public:
    /// \param path of the file; the first number is 0 when there is none
    explicit BirthNumber(const QString& path);

    /// Takes the next number, 0 to 255 and then 0 again, and writes it down before anybody uses it.
    int next();

    int current() const { return m_number; }

private:
    const QString m_path;
    int m_number = -1;
    bool m_isTold = false;
};

} // namespace plc

#endif
