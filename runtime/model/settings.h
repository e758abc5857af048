// SPDX-License-Identifier: MIT
/// \file
/// \brief What a person sets before the panel starts.
#ifndef RUNTIME_MODEL_SETTINGS_H
#define RUNTIME_MODEL_SETTINGS_H

#include "runtime/export.h"

#include <QString>

namespace plc
{

/// However often a station does not answer, it is tried again after so long (ms).
inline constexpr int longestStationPauseMs = 30000;

/// Words of a block, see Settings::maxBlockCount: a double word must fit, and one Modbus read carries so
/// many.
inline constexpr int smallestBlockCount = 2;
inline constexpr int largestBlockCount = 125;

struct Settings {
    QString driverPath; ///< path of the driver library, e.g. build/i386/libplcdriver.so
    QString host = QStringLiteral("127.0.0.1"); ///< name or address of the controller
    int port = 502;                             ///< its TCP port, 1..65535
    int station = 1;                            ///< station of every variable that names none, 0..255
    bool multiStation = false; ///< several stations share the link; values are kept per station
    bool remoteMode = false;   ///< remote frames instead of Modbus TCP
    int timeoutMs = 300;       ///< wait for a reply
    int retryLimit = 3;        ///< failures in a row that are retried
    int maxBlockCount = 63; ///< words of one request at most, 2..125; bits eight times as many. 63 suits any
                            ///< mix of areas; more than that would break a limit of Modbus in area 14
    int pollMs =
        100; ///< a refresh of all cyclic variables begins this long after the one before at the earliest;
             ///< 0: at once when that is over
    int gapMs = 0;             ///< pause between a reply, or the end of the wait for it, and the next request
    int staleAfterMs = 2000;   ///< a value that was not refreshed for so long looks stale
    int stationPauseMs = 1000; ///< with several stations: how long one that does not answer is left alone at
                               ///< first, see StationPauses; 0: every pass tries it again
};

/// \return what is wrong with \a settings and what is expected, or an empty text
PLCRUNTIME_API QString settingsError(const Settings& settings);

} // namespace plc

#endif
