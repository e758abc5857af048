// SPDX-License-Identifier: MIT
/// \file
/// \brief The time of what is captured.
#ifndef CAPTURE_CAPTURE_CLOCK_H
#define CAPTURE_CAPTURE_CLOCK_H

#include <QString>

#include <functional>
#include <optional>

namespace plc
{

/// Gives microseconds since the beginning of 1970, UTC.
using CaptureClock = std::function<qint64()>;

/// \return the system's time
qint64 captureTime();

/// \return "2026-11-21T14:03:22.123456Z"
QString captureTimeText(qint64 microseconds);

/// The inverse, of times from 1970 to 2105; the fraction of a second may be shorter or missing.
std::optional<qint64> parseCaptureTime(const QString& text);

} // namespace plc

#endif
