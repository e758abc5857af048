// SPDX-License-Identifier: MIT
/// \file
/// \brief Bytes as tests write and compare them.
#ifndef TESTS_SUPPORT_HEX_H
#define TESTS_SUPPORT_HEX_H

#include <QByteArray>

#include <string>

namespace test
{

/// \return the bytes of "00 01 FF"
inline QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

/// \return "00 01 FF", readable where a comparison fails
inline std::string toHex(const QByteArray& bytes)
{
    return bytes.toHex(' ').toUpper().toStdString();
}

} // namespace test

#endif
