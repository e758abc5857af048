// SPDX-License-Identifier: MIT
#include "bench/processors.h"

#include <sched.h>
#include <unistd.h>

#include <stdexcept>

namespace bench
{

namespace
{

int lastOf(const cpu_set_t& processors)
{
    int last = CPU_SETSIZE - 1;
    while (last >= 0 && !CPU_ISSET(last, &processors))
        --last;
    return last;
}

void moveTo(int processor)
{
    cpu_set_t one;
    CPU_ZERO(&one);
    if (processor >= 0)
        CPU_SET(processor, &one);
    if (processor < 0 || sched_setaffinity(0, sizeof one, &one) != 0)
        throw std::runtime_error("the system does not let a program choose its processor");
}

} // namespace

void stayOnOneProcessor()
{
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0)
        throw std::runtime_error("the system does not say which processors may be used");
    moveTo(lastOf(allowed));
}

void moveToAnotherProcessor()
{
    cpu_set_t now;
    if (sched_getaffinity(0, sizeof now, &now) != 0)
        throw std::runtime_error("the system does not say which processors may be used");
    moveTo(lastOf(now) - 1);
}

} // namespace bench
