// SPDX-License-Identifier: MIT
/// \file
/// \brief Short words for tests of the cyclic read list: the runtime's variables in, block reads out.
#ifndef TESTS_VARLIST_CYCLIC_VARIABLES_H
#define TESTS_VARLIST_CYCLIC_VARIABLES_H

#include "driver/driver_fixture.h"

#include <ostream>
#include <vector>

/// What a variable is when a test does not say otherwise.
enum { STATION_OF_VARIABLE = 5 };

/// A variable of the runtime: Cyclic(8, "3.14", 4).
inline HOST_VAR Cyclic(int area, const QString& text, int count, int station = STATION_OF_VARIABLE,
                       const QString& name = QString())
{
    HOST_VAR variable = HOST_VAR();
    variable.area = static_cast<unsigned char>(area);
    variable.station = static_cast<unsigned char>(station);
    variable.address = text;
    variable.name = name;
    variable.count = count;
    return variable;
}

/// The fields of a block read that most tests are about.
struct BlockRead {
    int area;
    int address;
    int count;
    int station = DEFAULT_STATION;
};

inline bool operator==(const BlockRead& a, const BlockRead& b)
{
    return a.area == b.area && a.address == b.address && a.count == b.count && a.station == b.station;
}

inline std::ostream& operator<<(std::ostream& out, const BlockRead& read)
{
    return out << "{area " << read.area << ", address " << read.address << ", count " << read.count
               << ", station " << read.station << "}";
}

inline std::vector<BlockRead> BlockReadsOf(const QList<RW_VAR>& list)
{
    std::vector<BlockRead> reads;
    for (const RW_VAR& var : list)
        reads.push_back({var.area, var.address, var.count, var.station});
    return reads;
}

/// The driver's cyclic read list, head first.
inline std::vector<BlockRead> BlockReads()
{
    return BlockReadsOf(PLC_driver.readList);
}

#endif
