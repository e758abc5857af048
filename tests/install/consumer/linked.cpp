// SPDX-License-Identifier: MIT
// A runtime that links the driver; the header is the only one it includes.
#include <plcdriver/plcdriver.h>

int main()
{
    return QueryFinishFlag() == 1 ? 0 : 1;
}
