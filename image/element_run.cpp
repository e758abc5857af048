// SPDX-License-Identifier: MIT
#include "image/element_run.h"

#include <algorithm>

ElementRun ExistingElements(int address, int count, int elements)
{
    const long long end = std::min<long long>(static_cast<long long>(address) + count, elements);
    const int start = std::max(address, 0);
    ElementRun run = {0, start, 0};
    if (start < end) {
        run.skipped = start - address;
        run.count = static_cast<int>(end - start);
    }
    return run;
}

bool ElementExists(int address, int offset, int elements)
{
    const long long element = static_cast<long long>(address) + offset;
    return element >= 0 && element < elements;
}
