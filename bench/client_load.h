// SPDX-License-Identifier: MIT
/// \file
/// \brief Clients of a Modbus TCP server that ask as fast as they are answered.
#ifndef BENCH_CLIENT_LOAD_H
#define BENCH_CLIENT_LOAD_H

#include "bench/loopback_controller.h"

namespace bench
{

struct LoadFigures {
    double requests;
    double seconds;
    double serverSeconds; ///< processor time of the server
};

/// Connects `clients` times, reads 100 registers over each connection again and again for `ms` milliseconds, and
/// closes the connections.
/// \throws std::runtime_error when a reply is missing or has not the size that it must have
LoadFigures loadServer(const LoopbackController& server, int clients, int ms);

} // namespace bench

#endif
