// SPDX-License-Identifier: MIT
#include "panel/watch/value_range.h"

#include "runtime/model/shown_number.h"

#include <algorithm>
#include <cmath>

namespace plc
{

namespace
{

void copyValue(std::vector<quint32>* to, const std::vector<quint32>& from, int value, int size)
{
    const auto begin = static_cast<std::ptrdiff_t>(value) * size;
    std::copy_n(from.begin() + begin, size, to->begin() + begin);
}

/// A range without a number yet has nothing that a number could be compared with.
void widenValue(ValueRange* range, const ListedVariable& listed, const std::vector<quint32>& elements,
                int value, int size)
{
    const double number = shownNumber(listed, elements, value);
    if (std::isnan(number))
        return;
    if (!(shownNumber(listed, range->least, value) <= number))
        copyValue(&range->least, elements, value, size);
    if (!(shownNumber(listed, range->greatest, value) >= number))
        copyValue(&range->greatest, elements, value, size);
}

void widenElements(ValueRange* range, const std::vector<quint32>& elements)
{
    for (std::size_t index = 0; index < elements.size(); ++index) {
        range->least[index] = std::min(range->least[index], elements[index]);
        range->greatest[index] = std::max(range->greatest[index], elements[index]);
    }
}

} // namespace

void widen(ValueRange* range, const ListedVariable* listed, const std::vector<quint32>& elements)
{
    const bool isFirst = range->least.size() != elements.size();
    if (listed == nullptr) {
        if (isFirst)
            range->least = range->greatest = elements;
        return widenElements(range, elements);
    }
    const int size = elementsOfValue(*listed);
    const int values = listed->type == ValueType::Text ? 0 : static_cast<int>(elements.size()) / size;
    const bool hasNumbers = values > 0 && !std::isnan(shownNumber(*listed, elements, 0));
    if (isFirst && !hasNumbers)
        return;
    if (isFirst)
        range->least = range->greatest = elements;
    for (int value = 0; value < values; ++value)
        widenValue(range, *listed, elements, value, size);
}

} // namespace plc
