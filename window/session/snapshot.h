// SPDX-License-Identifier: MIT
/// \file
/// \brief What happened since the window looked last.
#ifndef WINDOW_SESSION_SNAPSHOT_H
#define WINDOW_SESSION_SNAPSHOT_H

#include "runtime/cycle/statistics.h"
#include "runtime/link/link_exchange.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/outcome.h"
#include "runtime/model/station_report.h"
#include "runtime/model/variable.h"

#include <optional>
#include <vector>

namespace plc
{

/// How a variable is now.
struct ValueNews {
    int index = 0;
    ValueState state = ValueState::NeverRead;
    Failure failure;
    qint64 readAtMs = -1; ///< when it was answered last, in ms since 1970 UTC
    bool answered = false;
    std::vector<quint32>
        values; ///< where answered: as the controller had them, never what is only being written
};

/// What a curve gets: what a variable was from a time on.
struct CurveSample {
    int index = 0;
    qint64 atMs = 0;
    std::vector<quint32> values; ///< empty: there was no fresh value from here on
};

/// A frame and what came back.
struct FrameEntry {
    qint64 atMs = 0; ///< when it had ended, in ms since 1970 UTC
    int station = 0;
    Variable elements; ///< that it reads or writes
    bool isWrite = false;
    bool replyExpected = true;
    int durationMs = 0;
    int result = 0;   ///< the driver's code
    QByteArray frame; ///< as the driver built it
    LinkExchange exchange;
};

struct WriteNews {
    int index = 0;
    quint64 number = 0; ///< as LiveSession::write() returned it
    WriteOutcome outcome;
};

/// How the whole is.
struct SessionReport {
    LinkState link;
    std::vector<StationReport> stations;
    Statistics statistics;
};

struct Snapshot {
    std::vector<ValueNews> values;    ///< each variable once
    std::vector<CurveSample> samples; ///< of those that are recorded, all that came, by time
    std::vector<FrameEntry> frames;
    std::vector<WriteNews> writes;
    std::optional<SessionReport> report;
};

} // namespace plc

#endif
