// SPDX-License-Identifier: MIT
/// \file
/// \brief Variables cut into requests that the driver queues as one entry each and Modbus allows.
#ifndef RUNTIME_MODBUS_REQUEST_PIECES_H
#define RUNTIME_MODBUS_REQUEST_PIECES_H

#include "runtime/model/settings.h"
#include "runtime/model/variable.h"

#include <QString>

#include <vector>

namespace plc
{

/// One read request. What the driver is asked for may be more than what the piece shows: bits in words are
/// read as the words of area 9 that hold them.
struct ReadPiece {
    Variable shown; ///< the elements that belong to the variable
    Variable asked; ///< the elements that are read
};

/// \return \a variable with the station that it is served by; variable.station stays unless it is -1
Variable withStation(Variable variable, const Settings& settings);

/// \return why \a variable, its station filled in, cannot be read; empty when it can
QString readRefusal(const Variable& variable, const Settings& settings);

/// \return why \a variable, its station filled in, cannot be refreshed again and again; empty when it can. That is
///         what readRefusal() says, and over remote frames a value of several double words, which are refreshed
///         one by one there.
QString cyclicRefusal(const Variable& variable, const Settings& settings);

/// \return why \a values cannot be written to \a variable, its station filled in; empty when they can
QString writeRefusal(const Variable& variable, const std::vector<quint32>& values, const Settings& settings);

/// \return \a variable in pieces of \a most elements, in order; the last may be shorter
std::vector<Variable> cut(const Variable& variable, int most);

/// \return \a asked, elements that \a variable needs to be read, with what it shows of them
ReadPiece pieceOf(const Variable& variable, const Variable& asked);

/// \return the elements of \a area that one read request asks for at most
int mostElementsRead(int area, int maxBlockCount);

/// \return the read requests that \a variable needs, in order. No value is cut apart.
std::vector<ReadPiece> readPieces(const Variable& variable, int maxBlockCount);

/// \return the runs of elements that the driver writes as one request each, in order: bits one by one, and no
///         value cut apart
std::vector<Variable> writePieces(const Variable& variable, int maxBlockCount);

/// \return the count by which the driver reads \a elements of \a area: in area 14 it fetches one less
int driverReadCount(int area, int elements);

/// \return the elements that the driver fetches for a count: the inverse of driverReadCount()
int elementsRead(int area, int count);

/// \return the count by which the driver queues a write: in area 14 it counts 16-bit words
int driverWriteCount(int area, int elements);

/// \return the words of area 9 that bits in words lie in; any other variable as it is
Variable wordsOf(const Variable& variable);

/// \return true when both have elements in common; station 0 is every station. Areas that overlap in the
///         controller's address space are not seen as such, except 8 and 9.
bool overlaps(const Variable& a, const Variable& b);

} // namespace plc

#endif
