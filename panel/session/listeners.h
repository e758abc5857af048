// SPDX-License-Identifier: MIT
/// \file
/// \brief Who sees what goes over the link: --trace and --capture.
#ifndef PANEL_SESSION_LISTENERS_H
#define PANEL_SESSION_LISTENERS_H

#include "runtime/cycle/runtime.h"
#include "runtime/link/link_tap.h"

#include <memory>

namespace plc
{

/// Both may be empty; both are called on the communication thread.
struct Listeners {
    ExchangeObserver exchanges;
    std::shared_ptr<LinkTap> bytes;
};

/// To be called once for a command, because it begins the file of the capture anew.
/// \param trace     frames in words go to standard error
/// \param captureTo where the link's bytes go; empty: nowhere
Listeners listenersFor(bool trace, const QString& captureTo, const Settings& settings);

/// \return true when a capture of this process is not whole, because its file could not be written. To be asked
///         when nobody captures any more
bool captureFailed();

} // namespace plc

#endif
