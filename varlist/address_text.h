// SPDX-License-Identifier: MIT
/// \file
/// \brief Address texts. PLCAddressChangeIntef() in the public header is the same conversion.
#ifndef VARLIST_ADDRESS_TEXT_H
#define VARLIST_ADDRESS_TEXT_H

#include <QString>

/// \return the element that \a text names in \a area; negative when it names none or its number does not fit
///         into 32 bits; 0 for an area code outside 0..14. Any thread, no lock.
int StringAddressToInt(int area, QString text);

#endif
