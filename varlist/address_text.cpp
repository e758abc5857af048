// SPDX-License-Identifier: MIT
#include "varlist/address_text.h"

#include "driver/plcdriver.h"
#include "frames/address_map.h"

#include <QStringList>

#include <limits>
#include <utility>

namespace
{

const int NO_ELEMENT = -1;

int ToElement(long long element)
{
    const bool fits =
        element >= std::numeric_limits<int>::min() && element <= std::numeric_limits<int>::max();
    return fits ? static_cast<int>(element) : NO_ELEMENT;
}

// "word.bit". The bit has no upper bound, on purpose: 10.20 is the element of 11.4.
int BitOfWordElement(const QString& text, int base)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return NO_ELEMENT;
    bool wordOk = false;
    bool bitOk = false;
    const long long word = parts.at(0).toInt(&wordOk, base);
    const long long bit = parts.at(1).toInt(&bitOk, base);
    return wordOk && bitOk ? ToElement(word * 16 + bit) : NO_ELEMENT;
}

int NumberElement(const QString& text, const Area& area)
{
    bool ok = false;
    const int value = text.toInt(&ok, area.textBase);
    if (!ok || (area.textOrigin != 0 && value < area.textOrigin))
        return NO_ELEMENT;
    return value - area.textOrigin;
}

} // namespace

// The text comes by value because the exported twin takes it so.
// cppcheck-suppress passedByValue
int StringAddressToInt(int area, QString text) // NOLINT(performance-unnecessary-value-param)
{
    const Area* row = FindArea(area);
    if (!row)
        return 0;
    return row->kind == Area::BitOfWord ? BitOfWordElement(text, row->textBase) : NumberElement(text, *row);
}

int PLCAddressChangeIntef(int area, QString text)
try {
    return StringAddressToInt(area, std::move(text));
} catch (...) {
    return NO_ELEMENT;
}
