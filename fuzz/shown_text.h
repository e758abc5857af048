/// \file
/// \brief Whether a text may go to a terminal as it is.
#ifndef FUZZ_SHOWN_TEXT_H
#define FUZZ_SHOWN_TEXT_H

#include <QString>

namespace fuzz
{

inline bool isPrintable(const QString& text)
{
    for (const QChar character : text)
        if (!character.isPrint())
            return false;
    return true;
}

} // namespace fuzz

#endif
