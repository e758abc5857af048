// SPDX-License-Identifier: MIT
#include "runtime/cycle/once_reads.h"

#include "runtime/host/request_keys.h"

namespace plc
{

namespace
{

// A request that is given up takes the others in the driver's list with it, so few are there at a time.
const int mostInDriver = 8;

const int statusAnswered = 1;

} // namespace

OnceReads::OnceReads(const DriverCalls& calls, const Settings& settings, const WholeBits& wholeBits,
                     LaterCalls& later)
    : m_calls(calls), m_settings(settings), m_wholeBits(wholeBits), m_later(later),
      m_ledger(settings.multiStation)
{
}

RW_VAR OnceReads::record(int key, const Variable& asked, int elements) const
{
    RW_VAR request = {};
    request.hostKey = onceReadKey;
    request.hostSubKey = key;
    request.name2 = addressText(asked.area, asked.element);
    request.area = asked.area;
    request.station = asked.station;
    request.count = elements > 0 ? driverReadCount(asked.area, elements) : 0;
    return request;
}

int OnceReads::listSize() const
{
    // A read of no elements queues nothing and gives the size.
    RW_VAR nothing = record(0, Variable(), 0);
    return m_calls.AddListOnceReadVar(&nothing, 0);
}

Pending<ReadOutcome> OnceReads::add(const Variable& variable, const ReadDone& done)
{
    const auto job = std::make_shared<Job>();
    job->done = done;
    for (const ReadPiece& piece : readPieces(variable, m_settings.maxBlockCount)) {
        m_requests[m_nextKey] = {job, job->parts.size(), piece};
        m_backlog.push_back(m_nextKey++);
        job->parts.emplace_back();
    }
    job->left = static_cast<int>(job->parts.size());
    return job->pending;
}

void OnceReads::feed(const std::set<int>& stationsOff, const std::set<int>& stationsHeld)
{
    while (!m_backlog.empty() && m_ledger.size() < mostInDriver) {
        const int key = m_backlog.front();
        const Request request = m_requests.at(key);
        const int station = request.piece.asked.station;
        if (stationsHeld.count(station) != 0)
            return;
        m_backlog.pop_front();
        if (stationsOff.count(station) != 0)
            fail(key, stationOff(station));
        else
            queue(key, request);
    }
}

void OnceReads::queue(int key, const Request& request)
{
    const Variable& asked = request.piece.asked;
    RW_VAR read = record(key, asked, m_wholeBits(asked));
    if (m_calls.AddListOnceReadVar(&read, 0) == 0)
        fail(key, Failure(FailureKind::NotTaken, variableText(asked)));
    else
        settle(m_ledger.queued({key, asked}, listSize()), Failure());
}

void OnceReads::settlePolled()
{
    settle(m_ledger.polled(listSize()), Failure());
}

void OnceReads::note(int key, int status)
{
    m_notedKey = key;
    m_notedStatus = status;
}

void OnceReads::answered()
{
    settle(m_ledger.answered(listSize()), Failure());
}

void OnceReads::givenUp(bool onceRead, int station, const Failure& why)
{
    settle(m_ledger.givenUp(onceRead, station, listSize()), why);
}

void OnceReads::settle(const RequestLedger::Ended& ended, const Failure& given)
{
    std::vector<int> purged;
    for (const EndedRequest& request : ended) {
        if (request.end == RequestEnd::Done)
            take(request.key);
        else if (request.end == RequestEnd::Purged)
            purged.push_back(request.key);
        else
            fail(request.key, failureOf(request.end, given));
    }
    again(purged);
}

/// Puts requests that were never sent back in front of the others, in their order.
void OnceReads::again(const std::vector<int>& keys)
{
    m_backlog.insert(m_backlog.begin(), keys.begin(), keys.end());
    m_queuedAgain += static_cast<long>(keys.size());
}

void OnceReads::take(int key)
{
    if (m_notedKey != key || m_notedStatus != statusAnswered)
        return fail(key, Failure(FailureKind::NotReported));
    const auto found = m_requests.find(key);
    if (found == m_requests.end())
        return;
    const Request& request = found->second;
    request.job->parts[request.part] = valuesInDriver(m_calls, request.piece.shown);
    finish(found);
}

void OnceReads::fail(int key, const Failure& failure)
{
    const auto found = m_requests.find(key);
    if (found == m_requests.end())
        return;
    ReadOutcome& outcome = found->second.job->outcome;
    if (!hasFailed(outcome.failure))
        outcome.failure = failure;
    finish(found);
}

void OnceReads::finish(std::map<int, Request>::iterator request)
{
    const std::shared_ptr<Job> job = request->second.job;
    m_requests.erase(request);
    if (--job->left == 0)
        conclude(job.get());
}

void OnceReads::conclude(Job* job)
{
    ReadOutcome& outcome = job->outcome;
    outcome.done = !hasFailed(outcome.failure);
    ++(outcome.done ? m_done : m_failed);
    if (outcome.done) {
        for (const std::vector<quint32>& part : job->parts)
            outcome.values.insert(outcome.values.end(), part.begin(), part.end());
    }
    job->pending.finish(outcome);
    if (job->done)
        m_later.add([done = job->done, outcome] { done(outcome); });
}

void OnceReads::lost(int station, const Failure& why)
{
    std::deque<int> others;
    for (const int key : m_backlog) {
        if (m_requests.at(key).piece.asked.station == station)
            fail(key, failureOf(RequestEnd::Purged, why));
        else
            others.push_back(key);
    }
    m_backlog = others;
}

std::map<int, int> OnceReads::waitingByStation() const
{
    std::map<int, int> waiting;
    for (const auto& request : m_requests)
        ++waiting[request.second.piece.asked.station];
    return waiting;
}

void OnceReads::stop()
{
    m_backlog.clear();
    while (!m_requests.empty())
        fail(m_requests.begin()->first, Failure(FailureKind::Stopped));
}

} // namespace plc
