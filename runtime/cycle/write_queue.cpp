// SPDX-License-Identifier: MIT
#include "runtime/cycle/write_queue.h"

#include "runtime/host/request_keys.h"
#include "runtime/modbus/protocol.h"
#include "runtime/modbus/request_pieces.h"

namespace plc
{

WriteQueue::WriteQueue(const DriverCalls& calls, const Settings& settings, const RequestEnded& ended,
                       LaterCalls& later)
    : m_calls(calls), m_settings(settings), m_ended(ended), m_later(later), m_ledger(settings.multiStation)
{
}

int WriteQueue::listSize() const
{
    // Null changes nothing and gives the size.
    return m_calls.AddListWriteVar(nullptr, 0);
}

Pending<WriteOutcome> WriteQueue::add(const Variable& variable, const std::vector<quint32>& values,
                                      const WriteDone& done)
{
    const auto job = std::make_shared<Job>();
    job->done = done;
    job->outcome.broadcast = variable.station == broadcastStation;
    for (const Variable& piece : writePieces(variable, m_settings.maxBlockCount)) {
        const auto from = values.begin() + (piece.element - variable.element);
        m_requests[m_nextKey] = {job, piece, {from, from + piece.count}};
        m_backlog.push_back(m_nextKey++);
        ++job->left;
    }
    job->outcome.requests = job->left;
    return job->pending;
}

void WriteQueue::feed(const std::set<int>& stationsOff, const std::set<int>& stationsHeld)
{
    while (!m_backlog.empty()) {
        const int key = m_backlog.front();
        const Request request = m_requests.at(key);
        if (stationsOff.count(request.elements.station) != 0)
            end(key, stationOff(request.elements.station));
        else if (stationsHeld.count(request.elements.station) != 0 || !queue(key, request))
            return;
        m_backlog.pop_front();
    }
}

/// \return false when the request has to wait
bool WriteQueue::queue(int key, const Request& request)
{
    const Variable& elements = request.elements;
    if (!m_ledger.hasRoom() || m_ledger.wouldOvertake(elements))
        return false;
    QString name;
    QString address = addressText(elements.area, elements.element);
    QByteArray bytes = bytesOfValues(elements.area, request.values);
    const int size = m_calls.SetRegisterData(
        &name, elements.area, &address, static_cast<unsigned int>(elements.station), &bytes,
        driverWriteCount(elements.area, elements.count), writeKey, static_cast<unsigned int>(key));
    if (size == 0)
        end(key, Failure(FailureKind::NotTaken, variableText(elements)));
    else
        settle(m_ledger.queued({key, elements}, listSize()), Failure());
    return true;
}

void WriteQueue::settlePolled()
{
    settle(m_ledger.polled(listSize()), Failure());
}

void WriteQueue::answered()
{
    settle(m_ledger.answered(listSize()), Failure());
}

void WriteQueue::givenUp(bool write, int station, const Failure& why)
{
    settle(m_ledger.givenUp(write, station, listSize()), why);
}

void WriteQueue::lost(int station, const Failure& why)
{
    std::deque<int> others;
    for (const int key : m_backlog) {
        if (m_requests.at(key).elements.station == station)
            end(key, failureOf(RequestEnd::Purged, why));
        else
            others.push_back(key);
    }
    m_backlog = others;
}

void WriteQueue::stop()
{
    m_backlog.clear();
    while (!m_requests.empty())
        end(m_requests.begin()->first, Failure(FailureKind::Stopped));
}

std::map<int, int> WriteQueue::waitingByStation() const
{
    std::map<int, int> waiting;
    for (const auto& request : m_requests)
        ++waiting[request.second.elements.station];
    return waiting;
}

bool WriteQueue::isWriting(const Variable& variable) const
{
    for (const auto& request : m_requests) {
        if (overlaps(request.second.elements, variable))
            return true;
    }
    return false;
}

void WriteQueue::settle(const RequestLedger::Ended& ended, const Failure& given)
{
    for (const EndedRequest& request : ended)
        end(request.key, failureOf(request.end, given));
}

/// \param failure none: the request is confirmed
void WriteQueue::end(int key, const Failure& failure)
{
    const auto found = m_requests.find(key);
    if (found == m_requests.end())
        return;
    const Request request = found->second;
    m_requests.erase(found);
    WriteOutcome& outcome = request.job->outcome;
    const bool confirmed = !hasFailed(failure);
    if (confirmed)
        ++outcome.requestsConfirmed;
    else if (!hasFailed(outcome.failure))
        outcome.failure = failure;
    m_ended(request.elements, !confirmed || !driverHolds(request));
    if (--request.job->left == 0)
        finish(request.job.get());
}

/// After a failure the driver does not take written values into its memory at once; and it never takes
/// those of a broadcast for every station.
bool WriteQueue::driverHolds(const Request& request) const
{
    return request.elements.station != broadcastStation &&
           valuesInDriver(m_calls, request.elements) == request.values;
}

void WriteQueue::finish(Job* job)
{
    job->outcome.confirmed = job->outcome.requestsConfirmed == job->outcome.requests;
    ++(job->outcome.confirmed ? m_confirmed : m_failed);
    job->pending.finish(job->outcome);
    if (job->done)
        m_later.add([done = job->done, outcome = job->outcome] { done(outcome); });
}

} // namespace plc
