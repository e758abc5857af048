// SPDX-License-Identifier: MIT
/// \file
/// \brief Waiting for a write or read, with a word about it where that takes long.
#ifndef PANEL_SESSION_WAITING_H
#define PANEL_SESSION_WAITING_H

#include "panel/session/session.h"
#include "panel/terminal/progress_line.h"

namespace plc
{

/// \return how far a session is, e.g. "reading 9:100x9000: 12 requests so far"
QString progressText(const QString& what, const Runtime& runtime);

/// Waits as long as it takes or until a signal ends the session, and until its listeners have caught up.
template <class Outcome>
Outcome waitFor(Session* session, const Pending<Outcome>& pending, const QString& what)
{
    const int lookMs = 100;
    ProgressLine progress;
    while (!pending.wait(lookMs)) {
        session->heedSignals();
        progress.show(progressText(what, session->runtime()));
    }
    session->settle();
    return pending.get();
}

} // namespace plc

#endif
