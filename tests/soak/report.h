// SPDX-License-Identifier: MIT
/// \file
/// \brief Progress and final figures of a soak run, as text.
#ifndef SOAK_REPORT_H
#define SOAK_REPORT_H

#include "soak/figures.h"
#include "soak/options.h"

#include <vector>

namespace soak
{

/// \param all figures of every pair
long requestsOf(const std::vector<const Figures*>& all);
long wrongOf(const std::vector<const Figures*>& all);

QString progressLine(const Options& options, const std::vector<const Figures*>& all, double seconds);
QString finalReport(const Options& options, const std::vector<const Figures*>& all, double seconds);

} // namespace soak

#endif
