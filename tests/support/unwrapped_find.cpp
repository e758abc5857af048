// SPDX-License-Identifier: MIT
// Where the driver is a shared library: its calls of ExtendFindSameVar() go this way in programs that do not count
// them (tests/image/store_walks_test.cpp).

int realFind(int station, int area, int address) asm("__real__Z17ExtendFindSameVariii");
__attribute__((weak)) int find(int station, int area, int address) asm("__wrap__Z17ExtendFindSameVariii");

int find(int station, int area, int address)
{
    return realFind(station, area, address);
}
