// SPDX-License-Identifier: MIT
/// \file
/// \brief In which order the bytes of a value lie in the words of a controller.
///
/// The letters are the bytes of a 32-bit value from the most significant one (A) to the least (D), of a
/// text its characters, in the order in which they go over the wire: a word's high byte goes first, and
/// words go by rising address. Of 64-bit values there are eight bytes in the same manner: ABCD has the high
/// word first, CDAB the low word, and BADC and DCBA have the bytes of each word exchanged besides. Of text
/// the letters are four characters each. Of two that are left behind the last four only the order of bytes
/// counts; a list has such a text only where the words are not exchanged.
#ifndef RUNTIME_MODEL_WORD_ORDER_H
#define RUNTIME_MODEL_WORD_ORDER_H

#include "runtime/export.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace plc
{

enum class WordOrder : quint8 {
    Usual, ///< that of the driver's own values: CDAB for numbers, BADC for text
    Abcd,
    Cdab,
    Badc,
    Dcba
};

/// \return the order of "CDAB" in any case, Usual of an empty text; nothing for any other text
PLCRUNTIME_API std::optional<WordOrder> parseWordOrder(const QString& text);

/// \return the word that parseWordOrder() takes
PLCRUNTIME_API QString wordOrderWord(WordOrder order);

/// \return the words of all orders but Usual, for messages and help
PLCRUNTIME_API QString wordOrderWords();

/// \param bytes of whole values, the words by rising address, the low byte of each first
/// \param size of a value: 4 or 8
/// \return the same with the least significant byte of each value first. Its own inverse.
PLCRUNTIME_API QByteArray numbersInOrder(QByteArray bytes, WordOrder order, int size);

/// The same of a text, whose first character then stands first.
PLCRUNTIME_API QByteArray textInOrder(QByteArray bytes, WordOrder order);

} // namespace plc

#endif
