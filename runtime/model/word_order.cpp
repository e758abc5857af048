// SPDX-License-Identifier: MIT
#include "runtime/model/word_order.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace plc
{

namespace
{

const int wordBytes = 2;
const int textBytes = 4; // a letter of the order for each

struct OrderRow {
    const char* word;
    bool highWordFirst;
    bool highByteFirst; // of each word on the wire, as Modbus has it
};

// Row = WordOrder.
const OrderRow orderRows[] = {
    {"", false, true},     {"ABCD", true, true},   {"CDAB", false, true},
    {"BADC", true, false}, {"DCBA", false, false},
};

const OrderRow& rowOf(WordOrder order)
{
    return orderRows[static_cast<int>(order)];
}

void exchangeBytes(QByteArray* bytes)
{
    for (int at = 0; at + wordBytes <= bytes->size(); at += wordBytes)
        std::swap(*(bytes->begin() + at), *(bytes->begin() + at + 1));
}

/// Turns the words of each \a size bytes round; fewer at the end stay.
void turnWords(QByteArray* bytes, int size)
{
    for (int at = 0; at + size <= bytes->size(); at += size) {
        for (int low = at, high = at + size - wordBytes; low < high; low += wordBytes, high -= wordBytes)
            std::swap_ranges(bytes->begin() + low, bytes->begin() + low + wordBytes, bytes->begin() + high);
    }
}

} // namespace

std::optional<WordOrder> parseWordOrder(const QString& text)
{
    for (std::size_t row = 0; row < std::size(orderRows); ++row) {
        if (text.compare(QLatin1String(orderRows[row].word), Qt::CaseInsensitive) == 0)
            return static_cast<WordOrder>(row);
    }
    return std::nullopt;
}

QString wordOrderWord(WordOrder order)
{
    return QLatin1String(rowOf(order).word);
}

QString wordOrderWords()
{
    QStringList words;
    for (const OrderRow& row : orderRows)
        words << QLatin1String(row.word);
    return words.mid(1).join(QStringLiteral(", "));
}

QByteArray numbersInOrder(QByteArray bytes, WordOrder order, int size)
{
    if (!rowOf(order).highByteFirst)
        exchangeBytes(&bytes);
    if (rowOf(order).highWordFirst)
        turnWords(&bytes, size);
    return bytes;
}

QByteArray textInOrder(QByteArray bytes, WordOrder order)
{
    const OrderRow& row = rowOf(order == WordOrder::Usual ? WordOrder::Badc : order);
    if (row.highByteFirst)
        exchangeBytes(&bytes);
    if (!row.highWordFirst)
        turnWords(&bytes, textBytes);
    return bytes;
}

} // namespace plc
