// SPDX-License-Identifier: MIT
/// \file
/// \brief What a capture asks the controller for.
#ifndef CAPTURE_CAPTURED_READS_H
#define CAPTURE_CAPTURED_READS_H

#include "capture/capture_entry.h"
#include "capture/rebuilt_request.h"
#include "runtime/modbus/dialect.h"
#include "runtime/model/variable.h"

#include <memory>
#include <set>
#include <tuple>
#include <vector>

namespace plc
{

/// Collects the reads of a capture, each once, and the span of time.
class CapturedReads
{
public:
    explicit CapturedReads(FrameFormat format);

    void add(const CaptureEntry& entry);

    /// \return what was read, by station, area and first element; 10000 reads at most are known
    std::vector<Variable> variables() const;

    /// \return the stations that were asked
    const std::set<int>& stations() const { return m_stations; }

    bool isEmpty() const { return m_entries == 0; }
    qint64 firstTime() const { return m_firstTime; }
    qint64 lastTime() const { return m_lastTime; }

private:
    const Dialect& m_dialect;
    const std::unique_ptr<RequestRebuilder> m_rebuilder;
    std::set<QByteArray> m_known; // frames without the number
    std::set<std::tuple<int, int, int, int>> m_reads;
    std::set<int> m_stations;
    long m_entries = 0;
    qint64 m_firstTime = 0;
    qint64 m_lastTime = 0;
};

} // namespace plc

#endif
