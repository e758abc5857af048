// SPDX-License-Identifier: MIT
/// \file
/// \brief Times of logs as a person writes and reads them.
#ifndef HISTORY_LOCAL_TIME_H
#define HISTORY_LOCAL_TIME_H

#include <QString>

#include <optional>

namespace plc
{

/// \param timeMs since 1970, UTC
/// \return local time with its distance from UTC, "2026-11-22T14:03:22.123+01:00"
QString localTimeText(qint64 timeMs);

/// Takes ISO 8601 ("2026-11-22", "2026-11-22T14:03", "2026-11-22 14:03:22.5", with Z or +01:00 behind it;
/// without, local time) and words: "now", "today", "yesterday" (when the day began), "-90s", "-15m", "-1h",
/// "-7d" (so long before \a nowMs).
/// \return ms since 1970, UTC; nothing for any other text
std::optional<qint64> parseLocalTime(const QString& text, qint64 nowMs);

/// \return what parseLocalTime() takes, for messages
QString localTimeWords();

} // namespace plc

#endif
