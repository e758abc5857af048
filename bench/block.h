// SPDX-License-Identifier: MIT
/// \file
/// \brief One read of the controller's memory, as any Modbus library takes it.
#ifndef BENCH_BLOCK_H
#define BENCH_BLOCK_H

#include "runtime/model/variable.h"

#include <QByteArray>

#include <vector>

namespace bench
{

struct Block {
    bool coils;  ///< else holding registers
    int address; ///< Modbus address
    int count;
};

using Blocks = std::vector<Block>;

/// \return what the driver's read frames ask for
Blocks blocksOf(const std::vector<QByteArray>& frames);

/// \return each variable by itself; bits in words as the words that hold them
Blocks blocksOf(const std::vector<plc::Variable>& variables);

} // namespace bench

#endif
