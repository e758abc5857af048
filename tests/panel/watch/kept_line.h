// SPDX-License-Identifier: MIT
// A line of a list for rows that point at it.
#ifndef TESTS_PANEL_WATCH_KEPT_LINE_H
#define TESTS_PANEL_WATCH_KEPT_LINE_H

#include "runtime/model/variable_list.h"

#include <deque>

namespace test
{

/// \return a copy that stays
inline const plc::ListedVariable* kept(const plc::ListedVariable& listed)
{
    static std::deque<plc::ListedVariable> all;
    all.push_back(listed);
    return &all.back();
}

} // namespace test

#endif
