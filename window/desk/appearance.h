// SPDX-License-Identifier: MIT
/// \file
/// \brief Light, dark, or as the desktop has it.
#ifndef WINDOW_DESK_APPEARANCE_H
#define WINDOW_DESK_APPEARANCE_H

namespace plc
{

enum class Appearance { Desktop, Light, Dark };

/// Of the whole program, at once. Before the first call it is the desktop's.
void setAppearance(Appearance appearance);

} // namespace plc

#endif
