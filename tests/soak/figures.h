// SPDX-License-Identifier: MIT
/// \file
/// \brief What a soak run counts.
#ifndef SOAK_FIGURES_H
#define SOAK_FIGURES_H

#include "simulator/faults.h"

#include <array>
#include <atomic>

namespace soak
{

/// Of one panel and its controller. Lies in memory that the process of the pair shares with the one that
/// reports, so it has no pointers.
struct Figures {
    using Count = std::atomic<long>;

    Count requests{0}; ///< received by the controller
    Count replies{0};  ///< sent by the controller, spoiled ones included
    std::array<Count, simulator::faultKinds> faults{};
    Count frames{0}; ///< sent by the panel
    Count good{0};
    Count retried{0};
    Count givenUp{0};
    Count dropped{0};  ///< replies that belonged to no request, or to another
    Count panels{0};   ///< that were started, each with its list
    Count switches{0}; ///< of a station, off and on again
    Count connects{0};
    Count untrusted{0}; ///< connections given up because the stream was out of step
    Count writesConfirmed{0};
    Count writesFailed{0};
    Count readsDone{0};
    Count readsFailed{0};
    Count looks{0};
    Count freshLooks{0};
    Count heapAfterTenth{0};
    Count heapAtEnd{0};
    Count residentAfterTenth{0};
    Count residentAtEnd{0};
    Count memoryJudged{0}; ///< 1: there were enough samples
    Count wrong{0};        ///< complaints
};

} // namespace soak

#endif
