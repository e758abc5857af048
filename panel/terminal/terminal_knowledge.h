// SPDX-License-Identifier: MIT
/// \file
/// \brief What the system knows of the kind of terminal.
#ifndef PANEL_TERMINAL_TERMINAL_KNOWLEDGE_H
#define PANEL_TERMINAL_TERMINAL_KNOWLEDGE_H

namespace plc
{

/// \return true when the terminal that the environment names is known, and text can be put anywhere on it
bool canPlaceText();

} // namespace plc

#endif
