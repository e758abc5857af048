// SPDX-License-Identifier: MIT
/// \file
/// \brief Whether a text may go to a terminal as it is.
#ifndef FUZZ_SHOWN_TEXT_H
#define FUZZ_SHOWN_TEXT_H

#include <QString>
#include <QVector>

namespace fuzz
{

inline bool isPrintable(const QString& text)
{
    for (const uint character : text.toUcs4())
        if (!QChar::isPrint(character))
            return false;
    return true;
}

} // namespace fuzz

#endif
