/// \file
/// \brief The capture that a user asks for with --capture FILE.
#ifndef PANEL_CAPTURE_H
#define PANEL_CAPTURE_H

#include "panel/link_tap.h"
#include "panel/settings.h"

#include <memory>

namespace panel
{

/// \return what is against a capture with this file name: its ending says the format. Empty: nothing
QString captureRefusal(const QString& path);

/// \param path nothing is against it; empty: no capture \return null for none. A file that cannot be written
/// is
///             told on standard error.
std::shared_ptr<LinkTap> captureTo(const QString& path, const Settings& settings);

} // namespace panel

#endif
