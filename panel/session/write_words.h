// SPDX-License-Identifier: MIT
/// \file
/// \brief How a write ended, for people.
#ifndef PANEL_SESSION_WRITE_WORDS_H
#define PANEL_SESSION_WRITE_WORDS_H

#include "runtime/model/outcome.h"

#include <QString>

namespace plc
{

/// \return how \a outcome ended in words: what was confirmed, or why not
QString writeOutcomeText(const WriteOutcome& outcome);

} // namespace plc

#endif
