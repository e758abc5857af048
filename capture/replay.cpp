// SPDX-License-Identifier: MIT
#include "capture/replay.h"

#include "runtime/host/driver_settings.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/reply_failure.h"
#include "runtime/modbus/reply_fault.h"
#include "runtime/modbus/return_codes.h"

namespace plc
{

namespace
{

std::unique_ptr<RequestRebuilder> rebuilderFor(const Settings& settings,
                                               const std::vector<Variable>& variables)
{
    BlockPlanner planner(settings);
    return requestRebuilderFor(frameFormatOf(settings), variables,
                               planner.blocks(variables, settings.maxBlockCount));
}

} // namespace

Replay::Replay(const Settings& settings, const std::vector<Variable>& variables)
    : m_settings(settings), m_dialect(dialectOf(frameFormatOf(settings))),
      m_rebuilder(rebuilderFor(settings, variables)), m_library(settings.driverPath),
      m_calls(m_library.calls()), m_info(driverSettings(settings)), m_cyclic(settings),
      m_matcher(replyMatcherFor(frameFormatOf(settings)))
{
    m_calls.SetComInfo(&m_info);
    for (const Variable& variable : variables)
        m_cyclic.add(variable);
    m_cyclic.expect();
}

Replay::~Replay()
{
    m_calls.SetComInfo(nullptr);
}

std::optional<Variable> Replay::play(const CaptureEntry& entry)
{
    m_changed.reset();
    if (entry.kind == CaptureEntry::Request)
        request(entry.bytes);
    else if (entry.kind == CaptureEntry::NotSent)
        notSent(entry.bytes, entry.why);
    else if (entry.kind == CaptureEntry::Reply)
        reply(entry.bytes);
    else if (entry.kind != CaptureEntry::Closed) // what was asked may have been given up with the program
        noReply();
    return m_changed;
}

CyclicValue Replay::value(std::size_t index) const
{
    return m_cyclic.value(static_cast<int>(index), m_calls);
}

void Replay::request(const QByteArray& frame)
{
    noReply(); // to the one before
    if (!isServed(frame)) {
        ++m_counts.otherStations;
        return;
    }
    if (!isPending(frame)) {
        abandon();
        if (!queue(frame)) {
            ++m_counts.notRebuilt;
            return;
        }
    }
    ++m_counts.requests;
    m_matcher->expect(frame, m_pending->replyLength);
    m_isWaiting = true;
    if (m_pending->replyLength == 0)
        judge(QByteArray(), QString());
}

void Replay::notSent(const QByteArray& frame, const QString& why)
{
    request(frame);
    if (m_isWaiting)
        judge(QByteArray(), why);
}

bool Replay::isServed(const QByteArray& frame) const
{
    const int station = m_dialect.stationOf(frame);
    return m_settings.multiStation || station == 0 || station == m_settings.station;
}

/// A request that failed and was not given up is tried again.
bool Replay::isPending(const QByteArray& frame) const
{
    return m_pending != nullptr && isSameFrame(m_pending->frame, frame);
}

bool Replay::isSameFrame(const QByteArray& built, const QByteArray& captured) const
{
    return m_dialect.withoutNumber(built) == m_dialect.withoutNumber(captured);
}

/// \return false when the driver builds another frame, or none; then nothing is pending
bool Replay::queue(const QByteArray& frame)
{
    auto rebuilt = m_rebuilder->rebuild(frame);
    if (!rebuilt)
        return false;
    const int queueAsItIs = 1;
    if (rebuilt->isWrite)
        m_calls.AddListWriteVar(&rebuilt->request, queueAsItIs);
    else
        m_calls.AddListOnceReadVar(&rebuilt->request, queueAsItIs);
    m_pending = m_calls.ComCommunication();
    if (m_pending == nullptr) // once after five requests in a row the turn goes to cyclic reads
        m_pending = m_calls.ComCommunication();
    if (m_pending != nullptr && isSameFrame(m_pending->frame, frame))
        return true;
    discard();
    return false;
}

/// Lets the driver give up what it cannot be asked for, which says nothing about any value.
void Replay::discard()
{
    while (m_pending != nullptr && m_calls.DataCom(nullptr, 0)->result == PLC_RETRYING)
        ;
    m_pending = nullptr;
}

/// Nobody tried again what failed, so it was given up.
void Replay::abandon()
{
    while (m_pending != nullptr) {
        m_isWaiting = true;
        noReply();
    }
}

void Replay::reply(const QByteArray& bytes)
{
    QByteArray matching = bytes;
    DropReason reason = DropReason::Late;
    if (m_isWaiting && m_matcher->accept(&matching, &reason))
        judge(matching, QString());
    else
        ++m_counts.dropped;
}

void Replay::noReply()
{
    if (m_isWaiting)
        judge(QByteArray(), QString());
}

/// \param why there was no reply; empty: not in time
void Replay::judge(const QByteArray& reply, const QString& why)
{
    m_isWaiting = false;
    const RW_VAR request = m_pending->var;
    const FailureKind fault = dialectOf(frameFormatOf(m_settings)).faultOf(m_pending->frame, reply);
    QByteArray judged = fault == FailureKind::None ? reply : replyOfWrongLength();
    if (fault == FailureKind::Exception && exceptionCode(reply) == Acknowledge)
        m_info.retryLimit = 0; // it was not sent again
    const int code = m_calls.DataCom(&judged, judged.size())->result;
    if (code == PLC_RETRYING) {
        ++m_counts.retried;
        return;
    }
    m_pending = nullptr;
    renewTries(&m_info, m_settings.retryLimit); // as the runtime does
    const bool isRead = request.accessFlag == 0;
    m_changed = elementsOf({request, {}, 0});
    if (!isRead)
        m_changed->count = request.count;
    if (isSuccess(code)) {
        ++m_counts.good;
        if (isRead)
            m_cyclic.answered(request, Clock::now());
        return;
    }
    ++m_counts.failed;
    if (isRead)
        m_cyclic.givenUp(request, why.isEmpty() ? replyFailure(code, fault, reply, m_settings.timeoutMs)
                                                : connectionFailure(code, why));
}

} // namespace plc
