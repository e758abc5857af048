// SPDX-License-Identifier: MIT
/// \file
/// \brief The capture that a user asks for with --capture FILE.
#ifndef CAPTURE_CAPTURE_H
#define CAPTURE_CAPTURE_H

#include "capture/capture_file.h"
#include "runtime/link/link_tap.h"
#include "runtime/model/settings.h"

#include <memory>

namespace plc
{

/// \return what is against a capture with this file name: its ending says the format. Empty: nothing
QString captureRefusal(const QString& path);

/// \param path     nothing is against it; empty: no capture
/// \param complain is told when the file cannot be written
/// \return null for none
std::shared_ptr<LinkTap> captureTo(const QString& path, const Settings& settings,
                                   const CaptureFile::Complaint& complain);

} // namespace plc

#endif
