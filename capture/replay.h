// SPDX-License-Identifier: MIT
/// \file
/// \brief A captured exchange played into the driver, without a network.
#ifndef CAPTURE_REPLAY_H
#define CAPTURE_REPLAY_H

#include "capture/capture_entry.h"
#include "capture/rebuilt_request.h"
#include "runtime/cycle/cyclic_values.h"
#include "runtime/host/driver_library.h"
#include "runtime/link/reply_matcher.h"
#include "runtime/modbus/dialect.h"

#include <memory>
#include <vector>

namespace plc
{

struct ReplayCounts {
    long requests = 0;      ///< that the driver built again
    long good = 0;          ///< replies that it took
    long retried = 0;       ///< failures that were tried again
    long failed = 0;        ///< requests that it gave up
    long dropped = 0;       ///< replies that belong to no request, or came too late for it
    long notRebuilt = 0;    ///< requests that the driver does not build so: another program's, or malformed
    long otherStations = 0; ///< requests to stations that are not served
};

/// Each captured request is queued in the driver, which builds its frame and gets the captured reply, as when
/// it was live: DataCom() judges and files it. There must be no Runtime meanwhile, because the driver's state
/// is one per process.
class Replay
{
public:
    /// \param variables stations filled in, and nothing against any
    /// \throws std::runtime_error when the driver cannot be loaded
    Replay(const Settings& settings, const std::vector<Variable>& variables);
    ~Replay();
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    /// \return the elements of a request that was answered or given up, whose values may be others now
    std::optional<Variable> play(const CaptureEntry& entry);

    /// \return value and state of a variable as it is by now; its age means nothing
    CyclicValue value(std::size_t index) const;

    const ReplayCounts& counts() const { return m_counts; }

private:
    void request(const QByteArray& frame);
    void reply(const QByteArray& bytes);
    void noReply();
    bool isServed(const QByteArray& frame) const;
    bool isPending(const QByteArray& frame) const;
    bool queue(const QByteArray& frame);
    void abandon();
    bool isSameFrame(const QByteArray& built, const QByteArray& captured) const;
    void notSent(const QByteArray& frame, const QString& why);
    void judge(const QByteArray& reply, const QString& why);
    void discard();

    const Settings m_settings;
    const Dialect& m_dialect;
    const std::unique_ptr<RequestRebuilder> m_rebuilder;
    DriverLibrary m_library;
    const DriverCalls m_calls;
    COMINFO m_info;
    CyclicValues m_cyclic;
    const std::unique_ptr<ReplyMatcher> m_matcher;
    const Protocol* m_pending = nullptr; // the driver's, as long as it is unanswered
    bool m_isWaiting = false;            // for the reply to it
    std::optional<Variable> m_changed;   // by the entry that is played
    ReplayCounts m_counts;
};

} // namespace plc

#endif
