// SPDX-License-Identifier: MIT
/// \file
/// \brief What a capture holds, whatever its format.
#ifndef CAPTURE_CAPTURE_ENTRY_H
#define CAPTURE_CAPTURE_ENTRY_H

#include "runtime/model/settings.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <optional>

namespace plc
{

struct CaptureEntry {
    enum Kind {
        Opened,  ///< a connection was made
        Closed,  ///< it came to its end
        Request, ///< a whole frame to the controller
        Reply,   ///< a whole frame from it
        NotSent, ///< there was no connection for a frame
        TimedOut ///< the last request was not waited for any longer
    };
    Kind kind = Opened;
    qint64 microseconds = 0; ///< since the beginning of 1970, UTC
    QByteArray bytes;        ///< of Request, Reply and NotSent
    QString why;             ///< of NotSent
};

/// Takes the entries of a capture in the order of their times. \return false: it wants no more
using CaptureSink = std::function<bool(const CaptureEntry& entry)>;

/// How reading a capture ended.
struct CaptureEnd {
    QString
        error; ///< what is wrong with the file, and where; empty: nothing. What came before was handed out
    QStringList notes;                ///< what could not be used, and does no harm
    std::optional<Settings> settings; ///< that were captured with it: station, multiStation, remoteMode,
                                      ///< timeoutMs, retryLimit, maxBlockCount
};

} // namespace plc

#endif
