/// \file
/// \brief Text from files, made fit for a terminal.
#ifndef RUNTIME_MODEL_PRINTABLE_H
#define RUNTIME_MODEL_PRINTABLE_H

#include <QString>

namespace plc
{

/// \return \a text with dots for the characters that a terminal would act on
inline QString printable(QString text)
{
    for (QChar& character : text) {
        if (!character.isPrint())
            character = QLatin1Char('.');
    }
    return text;
}

} // namespace plc

#endif
