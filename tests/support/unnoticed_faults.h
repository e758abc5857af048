/// \file
/// \brief Faults that the runtime does not notice yet.
#ifndef SUPPORT_UNNOTICED_FAULTS_H
#define SUPPORT_UNNOTICED_FAULTS_H

#include "simulator/faults.h"

#include <algorithm>
#include <iterator>

namespace test
{

/// The runtime judges a reply by number, unit, function and length, and so takes these for good ones. Take them out
/// of the list when it looks at echoes and byte counts: tests and soak runs then make them, too.
constexpr simulator::Fault unnoticedFaults[] = {simulator::Fault::PaddedException, simulator::Fault::WrongEcho,
                                                simulator::Fault::WrongByteCount};

inline bool isUnnoticed(simulator::Fault fault)
{
    return std::find(std::begin(unnoticedFaults), std::end(unnoticedFaults), fault) != std::end(unnoticedFaults);
}

} // namespace test

#endif
