// SPDX-License-Identifier: MIT
/// \file
/// \brief Which processor a benchmark runs on.
#ifndef BENCH_PROCESSORS_H
#define BENCH_PROCESSORS_H

namespace bench
{

/// The last one of those that may be used, as the first often has the machine's interrupts. Threads and programs
/// that are started later stay there too. \throws std::runtime_error when the system does not let it choose
void stayOnOneProcessor();

/// The one before the last; programs that were started before stay where they are. \throws std::runtime_error as
/// stayOnOneProcessor(), and when there is no other
void moveToAnotherProcessor();

} // namespace bench

#endif
