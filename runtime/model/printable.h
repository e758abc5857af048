// SPDX-License-Identifier: MIT
/// \file
/// \brief Text from files, made fit for a terminal.
#ifndef RUNTIME_MODEL_PRINTABLE_H
#define RUNTIME_MODEL_PRINTABLE_H

#include <QString>
#include <QVector>

namespace plc
{

/// \return \a text with dots for the characters that a terminal would act on
inline QString printable(const QString& text)
{
    QString shown;
    for (const uint character : text.toUcs4())
        shown += QChar::isPrint(character) ? QString::fromUcs4(&character, 1) : QStringLiteral(".");
    return shown;
}

/// \return printable() of \a text; of a long one the first \a most characters and dots
inline QString excerpt(const QString& text, int most = 100)
{
    return text.size() <= most ? printable(text) : printable(text.left(most)) + QStringLiteral("...");
}

} // namespace plc

#endif
