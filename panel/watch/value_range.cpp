// SPDX-License-Identifier: MIT
#include "panel/watch/value_range.h"

#include "runtime/model/shown_number.h"

#include <algorithm>
#include <cmath>

namespace plc
{

namespace
{

/// A range without a number yet has nothing that a number could be compared with.
void widenValue(const RangePlace& range, const ListedVariable& listed, const quint32* value, int size)
{
    const double number = shownNumber(listed, value, size);
    if (std::isnan(number))
        return;
    if (!(shownNumber(listed, range.least, size) <= number))
        std::copy_n(value, size, range.least);
    if (!(shownNumber(listed, range.greatest, size) >= number))
        std::copy_n(value, size, range.greatest);
}

void widenElements(const RangePlace& range, const std::vector<quint32>& elements)
{
    for (std::size_t index = 0; index < elements.size(); ++index) {
        range.least[index] = std::min(range.least[index], elements[index]);
        range.greatest[index] = std::max(range.greatest[index], elements[index]);
    }
}

void begin(const RangePlace& range, const std::vector<quint32>& elements)
{
    std::copy(elements.begin(), elements.end(), range.least);
    std::copy(elements.begin(), elements.end(), range.greatest);
}

} // namespace

bool widen(const RangePlace& range, bool isKnown, const ListedVariable* listed,
           const std::vector<quint32>& elements)
{
    if (listed == nullptr) {
        if (!isKnown)
            begin(range, elements);
        widenElements(range, elements);
        return true;
    }
    const int size = elementsOfValue(*listed);
    const int values = listed->type == ValueType::Text ? 0 : static_cast<int>(elements.size()) / size;
    if (!isKnown) {
        if (values == 0 || std::isnan(shownNumber(*listed, elements.data(), size)))
            return false;
        begin(range, elements);
    }
    for (int value = 0; value < values; ++value) {
        const int at = value * size;
        widenValue({range.least + at, range.greatest + at}, *listed, elements.data() + at, size);
    }
    return true;
}

} // namespace plc
