// SPDX-License-Identifier: MIT
#include "gateway/spool/spool.h"

#include "gateway/spool/sample_code.h"
#include "gateway/spool/spool_store.h"
#include "runtime/model/counted.h"

#include <QDateTime>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace plc
{

namespace
{

using Clock = std::chrono::steady_clock;

// How long samples are held back from the disk: most are acknowledged until then.
const std::chrono::milliseconds writePeriod(100);
const std::chrono::milliseconds retryPeriod(1000); // after a failure
const std::chrono::milliseconds lookPeriod(1000);  // for samples that are too old
const std::chrono::seconds tellPeriod(60);         // of what was dropped: a spool may be full for days

// A chunk is filled up to this many bytes, commit by commit. It is what is read, and dropped, at once.
const int fullChunk = 16 * 1024;

qint64 bytesInMemory(const Sample& sample)
{
    const auto* text = std::get_if<QString>(&sample.value);
    const qint64 ofTexts = text == nullptr ? 0 : 32 + 2 * qint64(text->size());
    return qint64(sizeof(Sample)) + ofTexts;
}

qint64 systemNow()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace

/// The file belongs to a thread of its own, which works without m_mutex while it waits for the disk. All else is
/// under m_mutex.
///
/// Samples lie in the chunks of the file, in m_recent, or in both: m_recent has the last ones without a gap, m_chunks
/// those up to m_onDisk.
class Spool::Private
{
public:
    Private(const Tell& tell, const Now& now) : m_tell(tell), m_now(now ? now : Now(systemNow)) {}
    ~Private() { close(); }

    QString open(const QString& path, const QStringList& names, const SpoolLimits& limits);
    void append(const std::vector<Sample>& batch);
    std::vector<TakenSample> take(int most, quint64 after);
    void acknowledge(quint64 upTo);
    SpoolFigures figures() const;
    bool flush();
    void close();

private:
    using Lock = std::unique_lock<std::mutex>;

    struct Loaded {
        quint64 first = 0;
        std::vector<Sample> samples;

        bool has(quint64 sequence) const { return sequence >= first && sequence - first < samples.size(); }
    };

    // On any thread.
    bool isOpen() const { return m_isOpen && !m_closing; }
    quint64 next() const { return m_recentFirst + m_recent.size(); }
    void forgetFirstRecent();
    void keepMemoryBounded();
    void writeSoon(Clock::time_point when);
    void waitForWriter(Lock* lock, bool* wish);
    bool takeLoaded(int most, quint64 after, std::vector<TakenSample>* taken);
    void takeRecent(int most, quint64 after, std::vector<TakenSample>* taken);
    void markTaken(Lock* lock, std::vector<TakenSample>* taken);
    std::deque<SpoolChunk>::const_iterator chunkAt(quint64 sequence) const;
    quint64 waitingOf(const SpoolChunk& chunk) const;
    quint64 waitingOnDisk() const;

    // On the writer's thread.
    void work(const QString& path, const QStringList& names);
    bool openStore(const QString& path, const QStringList& names);
    void waitForWork(Lock* lock);
    void serve(Lock* lock);
    void commit(Lock* lock, bool withSamples);
    SpoolChange nextChange(bool withSamples);
    void putRecent(SpoolChange* change);
    void committed(const SpoolChange& change);
    void failed();
    void load(Lock* lock);
    void dropDamaged(quint64 first);
    void dropOld();
    void dropFirstChunk();
    void forgetFirstChunk();
    void trim();
    void account(const SpoolChunk& chunk, int sign);
    void tellDropped(Lock* lock);
    void tell(Lock* lock, const QString& words);

    const Tell m_tell;
    const Now m_now;
    SpoolLimits m_limits;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake; // the writer
    std::condition_variable m_served;
    std::thread m_thread;
    bool m_isOpen = false;
    bool m_closing = false;
    QString m_openError;
    QString m_problem;     // of the last attempt to write
    QString m_readProblem; // and to read

    std::deque<Sample> m_recent;
    quint64 m_recentFirst = 1;
    qint64 m_recentBytes = 0;
    qint64 m_recentSince = -1; // since when the oldest that is not on disk waits
    std::deque<SpoolChunk> m_chunks;
    quint64 m_chunkSamples = 0; // of all of them
    qint64 m_chunkBytes = 0;
    quint64 m_begun = 0; // up to here samples are on disk or being written
    quint64 m_begunFrom = 1;
    quint64 m_onDisk = 0; // up to here they are there
    SpoolMarks m_marks;
    SpoolMarks m_marksOnDisk;
    quint64 m_droppedForRoom = 0; // that nobody was told of
    quint64 m_droppedForAge = 0;
    quint64 m_droppedForMemory = 0;
    quint64 m_droppedDamaged = 0;
    std::vector<quint64> m_removed; // damaged chunks that are still in the file

    // What callers wish of the writer. It clears the wish when it has done it, or cannot.
    bool m_wantMarks = false;
    bool m_wantChunk = false;
    bool m_wantFlush = false;
    quint64 m_wantedChunk = 0;
    Loaded m_loaded;

    bool m_isWriteDue = false;
    Clock::time_point m_writeDue;
    Clock::time_point m_retryAt;
    Clock::time_point m_lookDue;
    Clock::time_point m_tellDue;

    std::unique_ptr<SpoolStore> m_store; // the writer's alone, as what follows
    SpoolChunk m_tail;                   // the last chunk, as long as more is put into it
    QByteArray m_tailSamples;
};

QString Spool::Private::open(const QString& path, const QStringList& names, const SpoolLimits& limits)
{
    Lock lock(m_mutex);
    m_limits = limits;
    m_thread = std::thread([this, path, names] { work(path, names); });
    m_served.wait(lock, [this] { return m_isOpen || !m_openError.isEmpty(); });
    if (!m_isOpen) {
        lock.unlock();
        m_thread.join();
    }
    return m_openError;
}

void Spool::Private::close()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
        m_wake.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
    m_isOpen = false;
}

void Spool::Private::append(const std::vector<Sample>& batch)
{
    if (batch.empty())
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_recentSince < 0)
        m_recentSince = m_now();
    for (const Sample& sample : batch) {
        m_recentBytes += bytesInMemory(sample);
        m_recent.push_back(sample);
    }
    keepMemoryBounded();
    writeSoon(Clock::now() + writePeriod);
}

void Spool::Private::forgetFirstRecent()
{
    m_recentBytes -= bytesInMemory(m_recent.front());
    m_recent.pop_front();
    ++m_recentFirst;
}

/// What is on disk, or about to be, can be read from there.
void Spool::Private::keepMemoryBounded()
{
    while (m_recentBytes > m_limits.memoryBytes && !m_recent.empty()) {
        if (m_recentFirst > m_begun) {
            ++m_marks.dropped;
            ++m_droppedForMemory;
        }
        forgetFirstRecent();
    }
}

void Spool::Private::writeSoon(Clock::time_point when)
{
    if (m_isWriteDue)
        return;
    m_isWriteDue = true;
    m_writeDue = when;
    m_wake.notify_all();
}

void Spool::Private::waitForWriter(Lock* lock, bool* wish)
{
    *wish = isOpen();
    m_wake.notify_all();
    m_served.wait(*lock, [wish] { return !*wish; });
}

std::deque<SpoolChunk>::const_iterator Spool::Private::chunkAt(quint64 sequence) const
{
    return std::lower_bound(m_chunks.begin(), m_chunks.end(), sequence,
                            [](const SpoolChunk& chunk, quint64 wanted) { return lastOf(chunk) < wanted; });
}

std::vector<TakenSample> Spool::Private::take(int most, quint64 after)
{
    Lock lock(m_mutex);
    std::vector<TakenSample> taken;
    const auto wanted = static_cast<std::size_t>(std::max(0, most));
    while (taken.size() < wanted) {
        const quint64 from = std::max(taken.empty() ? after : taken.back().sequence, m_marks.done) + 1;
        if (from > m_onDisk && from <= m_begun && from < m_recentFirst &&
            isOpen()) { // it is on its way to the disk
            waitForWriter(&lock, &m_wantMarks);
            continue;
        }
        const auto chunk = chunkAt(from);
        if (chunk == m_chunks.end() || std::max(chunk->first, from) >= m_recentFirst) {
            takeRecent(most, from, &taken);
            break;
        }
        if (takeLoaded(most, std::max(chunk->first, from), &taken))
            continue;
        m_wantedChunk = chunk->first;
        waitForWriter(&lock, &m_wantChunk);
        if (!m_readProblem.isEmpty() || !isOpen())
            break;
    }
    markTaken(&lock, &taken);
    return taken;
}

/// \return false when the sample \a from is not there
bool Spool::Private::takeLoaded(int most, quint64 from, std::vector<TakenSample>* taken)
{
    if (!m_loaded.has(from))
        return false;
    for (quint64 sequence = from; taken->size() < static_cast<std::size_t>(most) && m_loaded.has(sequence);
         ++sequence)
        taken->push_back(
            {sequence, m_loaded.samples[static_cast<std::size_t>(sequence - m_loaded.first)], false});
    return true;
}

void Spool::Private::takeRecent(int most, quint64 from, std::vector<TakenSample>* taken)
{
    for (quint64 sequence = std::max(from, m_recentFirst);
         sequence < next() && taken->size() < static_cast<std::size_t>(most); ++sequence)
        taken->push_back({sequence, m_recent[static_cast<std::size_t>(sequence - m_recentFirst)], false});
}

/// A sample that is on disk must not leave before it is noted there that it did: after a kill it would come again and
/// look new. One that is only in memory is noted with itself.
void Spool::Private::markTaken(Lock* lock, std::vector<TakenSample>* taken)
{
    if (taken->empty())
        return;
    for (TakenSample& sample : *taken)
        sample.handedOutBefore = sample.sequence <= m_marks.handedOut;
    m_marks.handedOut = std::max(m_marks.handedOut, taken->back().sequence);
    const bool isOnDisk = taken->front().sequence <= m_begun;
    if (isOnDisk && std::min(m_marks.handedOut, m_begun) > m_marksOnDisk.handedOut && m_problem.isEmpty())
        waitForWriter(lock, &m_wantMarks);
}

void Spool::Private::acknowledge(quint64 upTo)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const quint64 done = std::min(upTo, m_marks.handedOut);
    if (done <= m_marks.done)
        return;
    m_marks.done = done;
    while (!m_recent.empty() && m_recentFirst <= done)
        forgetFirstRecent();
    if (m_recent.empty())
        m_recentSince = -1;
    if (!m_chunks.empty() && m_chunks.front().first <= done)
        writeSoon(Clock::now() + writePeriod);
}

/// \return how many samples of \a chunk are neither done nor in memory
quint64 Spool::Private::waitingOf(const SpoolChunk& chunk) const
{
    const quint64 first = std::max(chunk.first, m_marks.done + 1);
    const quint64 behind = std::min(lastOf(chunk) + 1, m_recentFirst);
    return behind > first ? behind - first : 0;
}

/// \return how many samples are neither done nor in memory: those of all chunks, less what is done of the first ones
///         and what memory has of the last ones
quint64 Spool::Private::waitingOnDisk() const
{
    quint64 waiting = m_chunkSamples;
    for (const SpoolChunk& chunk : m_chunks) {
        if (chunk.first > m_marks.done)
            break;
        waiting -= std::min(lastOf(chunk), m_marks.done) + 1 - chunk.first;
    }
    const quint64 inBoth = m_onDisk + 1 > m_recentFirst ? m_onDisk + 1 - m_recentFirst : 0;
    return waiting - std::min<quint64>(inBoth, m_recent.size());
}

SpoolFigures Spool::Private::figures() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    SpoolFigures figures;
    figures.newest = next() - 1;
    figures.depth = m_recent.size() + waitingOnDisk();
    figures.bytes = m_chunkBytes;
    const auto oldest = chunkAt(m_marks.done + 1);
    if (oldest != m_chunks.end())
        figures.oldestAt = oldest->since;
    else if (!m_recent.empty())
        figures.oldestAt = m_recentSince;
    figures.dropped = m_marks.dropped;
    figures.problem = m_problem.isEmpty() ? m_readProblem : m_problem;
    return figures;
}

bool Spool::Private::flush()
{
    Lock lock(m_mutex);
    waitForWriter(&lock, &m_wantFlush);
    return m_isOpen && m_problem.isEmpty();
}

void Spool::Private::work(const QString& path, const QStringList& names)
{
    if (!openStore(path, names))
        return;
    Lock lock(m_mutex);
    while (!m_closing) {
        waitForWork(&lock);
        serve(&lock);
    }
    commit(&lock, true);
    tellDropped(&lock);
    m_wantMarks = m_wantChunk = m_wantFlush = false;
    m_served.notify_all();
    lock.unlock();
    m_store.reset();
}

/// Any wake-up ends it: what is due may have changed.
void Spool::Private::waitForWork(Lock* lock)
{
    if (m_wantMarks || m_wantChunk || m_wantFlush)
        return;
    const bool isLookDue = !m_chunks.empty();
    if (m_isWriteDue)
        m_wake.wait_until(*lock, isLookDue ? std::min(m_writeDue, m_lookDue) : m_writeDue);
    else if (isLookDue)
        m_wake.wait_until(*lock, m_lookDue);
    else
        m_wake.wait(*lock);
}

bool Spool::Private::openStore(const QString& path, const QStringList& names)
{
    QString error;
    try {
        m_store = std::make_unique<SpoolStore>(path, names, [this](const QString& words) {
            if (m_tell)
                m_tell(words);
        });
    } catch (const SpoolError& reason) {
        error = QString::fromStdString(reason.what());
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_store) {
        m_marks = m_marksOnDisk = m_store->marks();
        m_chunks = m_store->chunks();
        for (const SpoolChunk& chunk : m_chunks)
            account(chunk, 1);
        const quint64 last = m_chunks.empty() ? 0 : lastOf(m_chunks.back());
        m_onDisk = m_begun = std::max({last, m_marks.done, m_marks.handedOut});
        m_recentFirst = m_onDisk + 1;
        m_isOpen = true;
        trim();
    }
    m_openError = error;
    m_served.notify_all();
    return m_store != nullptr;
}

void Spool::Private::serve(Lock* lock)
{
    const Clock::time_point now = Clock::now();
    if (m_wantChunk) {
        load(lock);
        m_wantChunk = false;
    }
    if (m_wantMarks) {
        commit(lock, false);
        m_wantMarks = false;
    }
    const bool isDue = m_isWriteDue && now >= m_writeDue && now >= m_retryAt;
    const bool isLookDue = !m_chunks.empty() && now >= m_lookDue;
    if (m_wantFlush || isDue || isLookDue) {
        commit(lock, true);
        m_wantFlush = false;
        m_lookDue = now + lookPeriod;
    }
    m_served.notify_all();
    tellDropped(lock);
}

/// What is not written because it failed is tried again later.
void Spool::Private::commit(Lock* lock, bool withSamples)
{
    const bool hadChunks = !m_chunks.empty();
    const SpoolChange change = nextChange(withSamples);
    if (withSamples)
        m_isWriteDue = false;
    if (!hadChunks && change.put.empty() && change.marks.dropped == m_marksOnDisk.dropped)
        return;
    if (change.put.empty() && change.removed.empty() && change.marks == m_marksOnDisk)
        return;
    QString words;
    lock->unlock();
    try {
        m_store->commit(change);
    } catch (const SpoolError& error) {
        words = QString::fromStdString(error.what());
    }
    lock->lock();
    const bool wasTold = !m_problem.isEmpty();
    m_problem = words;
    if (words.isEmpty())
        committed(change);
    else
        failed();
    if (words.isEmpty() && wasTold)
        tell(lock, QStringLiteral("the spool can be written again"));
    if (!words.isEmpty() && !wasTold)
        tell(lock, words + QStringLiteral("; values wait in memory until it works, as far as they fit"));
}

SpoolChange Spool::Private::nextChange(bool withSamples)
{
    SpoolChange change;
    if (withSamples)
        dropOld();
    trim();
    change.removeBefore = m_chunks.empty() ? m_marks.done + 1 : m_chunks.front().first;
    if (withSamples)
        putRecent(&change);
    change.removed = m_removed;
    change.marks = m_marks;
    return change;
}

/// Fills the last chunk up and begins new ones.
void Spool::Private::putRecent(SpoolChange* change)
{
    const qint64 now = m_now();
    const quint64 from = std::max({m_begun, m_marks.done, m_recentFirst - 1}) + 1;
    quint64 sequence = from;
    if (m_tail.count != 0 && (lastOf(m_tail) + 1 != sequence || m_tailSamples.size() >= fullChunk))
        m_tail = SpoolChunk();
    while (sequence < next()) {
        if (m_tail.count == 0) {
            m_tail.first = sequence;
            m_tail.since = m_recentSince < 0 ? now : m_recentSince;
            m_tailSamples.clear();
        }
        for (; sequence < next() && m_tailSamples.size() < fullChunk; ++sequence, ++m_tail.count) {
            const Sample& sample = m_recent[static_cast<std::size_t>(sequence - m_recentFirst)];
            appendSample(&m_tailSamples, sample, m_store->nameOf(sample.variable));
        }
        m_tail.until = now;
        m_tail.bytes = bytesInFile(m_tailSamples.size());
        change->put.push_back({m_tail, m_tailSamples});
        if (m_tailSamples.size() >= fullChunk)
            m_tail = SpoolChunk();
    }
    m_begunFrom = from;
    m_begun = next() - 1;
}

void Spool::Private::committed(const SpoolChange& change)
{
    for (const SpoolChange::Put& put : change.put) {
        if (!m_chunks.empty() && m_chunks.back().first == put.chunk.first) {
            account(m_chunks.back(), -1);
            m_chunks.pop_back();
        }
        m_chunks.push_back(put.chunk);
        account(put.chunk, 1);
        m_onDisk = std::max(m_onDisk, lastOf(put.chunk));
    }
    if (!change.put.empty())
        m_recentSince = m_begun + 1 == next() ? -1 : m_now();
    m_marksOnDisk = change.marks;
    m_removed.clear();
}

/// What was to be written and has left memory meanwhile is lost.
void Spool::Private::failed()
{
    const quint64 behind = std::min(m_recentFirst, m_begun + 1);
    const quint64 from = std::max(m_begunFrom, m_marks.done + 1);
    if (m_begun > m_onDisk && behind > from) {
        m_marks.dropped += behind - from;
        m_droppedForMemory += behind - from;
    }
    m_begun = m_onDisk;
    m_tail = SpoolChunk();
    m_retryAt = Clock::now() + retryPeriod;
    m_isWriteDue = true;
    m_writeDue = m_retryAt;
}

/// Reads the chunk that take() wants.
void Spool::Private::load(Lock* lock)
{
    const quint64 first = m_wantedChunk;
    const auto wanted = chunkAt(first);
    const quint64 count = wanted == m_chunks.end() || wanted->first != first ? 0 : wanted->count;
    if (count == 0)
        return;
    std::vector<Sample> samples;
    QString words;
    lock->unlock();
    try {
        samples = m_store->read(first);
    } catch (const SpoolError& error) {
        words = QString::fromStdString(error.what());
    }
    lock->lock();
    const bool isNews = m_readProblem != words;
    m_readProblem = words;
    if (!words.isEmpty())
        return isNews ? tell(lock, words) : void();
    if (samples.size() < count)
        return dropDamaged(first);
    m_loaded = Loaded{first, std::move(samples)};
}

void Spool::Private::dropDamaged(quint64 first)
{
    const auto damaged = std::find_if(m_chunks.begin(), m_chunks.end(),
                                      [first](const SpoolChunk& chunk) { return chunk.first == first; });
    if (damaged == m_chunks.end())
        return;
    const quint64 lost = waitingOf(*damaged);
    m_marks.dropped += lost;
    m_droppedDamaged += lost;
    m_removed.push_back(first);
    account(*damaged, -1);
    m_chunks.erase(damaged);
    if (m_tail.first == first)
        m_tail = SpoolChunk();
}

void Spool::Private::account(const SpoolChunk& chunk, int sign)
{
    m_chunkSamples = sign > 0 ? m_chunkSamples + chunk.count : m_chunkSamples - chunk.count;
    m_chunkBytes += sign * chunk.bytes;
}

/// Makes room for what is in memory, too.
void Spool::Private::dropOld()
{
    const qint64 oldest = m_now() - m_limits.ageMs;
    qint64 bytes = m_chunkBytes + (m_begun + 1 < next() ? bytesInFile(fullChunk) : 0);
    while (!m_chunks.empty() && (bytes > m_limits.bytes || m_chunks.front().until < oldest)) {
        const quint64 before = m_marks.dropped;
        const bool isForRoom = bytes > m_limits.bytes;
        bytes -= m_chunks.front().bytes;
        dropFirstChunk();
        (isForRoom ? m_droppedForRoom : m_droppedForAge) += m_marks.dropped - before;
    }
}

void Spool::Private::dropFirstChunk()
{
    const SpoolChunk chunk = m_chunks.front();
    const quint64 from = std::max(chunk.first, m_marks.done + 1);
    if (lastOf(chunk) >= from)
        m_marks.dropped += lastOf(chunk) + 1 - from;
    m_marks.done = std::max(m_marks.done, lastOf(chunk));
    while (!m_recent.empty() && m_recentFirst <= m_marks.done)
        forgetFirstRecent();
    forgetFirstChunk();
}

void Spool::Private::forgetFirstChunk()
{
    if (m_tail.first == m_chunks.front().first)
        m_tail = SpoolChunk();
    account(m_chunks.front(), -1);
    m_chunks.pop_front();
}

/// Forgets the chunks that are done.
void Spool::Private::trim()
{
    while (!m_chunks.empty() && lastOf(m_chunks.front()) <= m_marks.done)
        forgetFirstChunk();
}

void Spool::Private::tellDropped(Lock* lock)
{
    struct Reason {
        quint64* count;
        const char* words;
    };
    if (!m_closing && Clock::now() < m_tellDue)
        return;
    const Reason reasons[] = {
        {&m_droppedForRoom, "the spool is full: %1 dropped, the oldest"},
        {&m_droppedForAge, "%1 dropped after waiting too long in the spool"},
        {&m_droppedForMemory, "the disk does not keep up and memory is full: %1 dropped"},
        {&m_droppedDamaged, "a part of the spool is damaged: %1 dropped"},
    };
    for (const Reason& reason : reasons) {
        const quint64 count = std::exchange(*reason.count, 0);
        if (count == 0)
            continue;
        m_tellDue = Clock::now() + tellPeriod;
        tell(lock, QString::fromLatin1(reason.words)
                       .arg(counted(static_cast<qint64>(count), "value was", "values were")));
    }
}

void Spool::Private::tell(Lock* lock, const QString& words)
{
    if (!m_tell)
        return;
    lock->unlock();
    m_tell(words);
    lock->lock();
}

Spool::Spool(const Tell& tell, const Now& now) : d(new Private(tell, now)) {}

Spool::~Spool() = default;

QString Spool::open(const QString& path, const QStringList& names, const SpoolLimits& limits)
{
    return d->open(path, names, limits);
}

void Spool::append(const std::vector<Sample>& batch)
{
    d->append(batch);
}

std::vector<TakenSample> Spool::take(int most, quint64 after)
{
    return d->take(most, after);
}

void Spool::acknowledge(quint64 upTo)
{
    d->acknowledge(upTo);
}

SpoolFigures Spool::figures() const
{
    return d->figures();
}

bool Spool::flush()
{
    return d->flush();
}

void Spool::close()
{
    d->close();
}

} // namespace plc
