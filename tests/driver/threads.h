// SPDX-License-Identifier: MIT
/// \file
/// \brief A communication thread that polls and answers, and other threads beside it.
///
/// Elsewhere these tests show that nothing is lost, doubled or torn; scripts/races runs them under two tools
/// that see every access without its lock.
#ifndef TESTS_DRIVER_THREADS_H
#define TESTS_DRIVER_THREADS_H

#include "cycle.h"

#include <QMutex>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <thread>

/// Which replies the controller gives.
enum Losses {
    NO_LOSS,
    EVERY_OTHER_REPLY,   ///< is lost
    THREE_OF_TEN_REPLIES ///< are lost, one after the other
};

/// A controller that answers every read with registers that all hold 0x1111, and echoes every write.
QByteArray AnswerTo(const Protocol& request);

/// \return how many of the keys were not seen exactly once
int NotOnce(const std::map<int, int>& seen, int firstKey, int count);

/// \return words in \a bytes whose two bytes differ, as only a word that was read half written has them
int TornWords(const QByteArray& bytes);

class Threads : public CycleTest
{
protected:
    void SetUp() override;

    /// Starts a thread.
    void run(const std::function<void()>& work) { m_threads.emplace_back(work); }

    /// The communication thread's loop: ends when the other threads have and nothing is queued any more.
    void communicate(Losses losses = NO_LOSS);

    /// Waits for the threads that run() started.
    void joinAll();

    /// Runs \a work beside a communication thread until all is done.
    void beside(const std::vector<std::function<void()>>& work, Losses losses = NO_LOSS);

    std::map<int, int> writesDone; ///< by key, the communication thread's own
    std::map<int, int> readsDone;
    int failures = 0; ///< results that were not what the reply deserves

    /// Counts of one-shot reports by key, a failure as 1000; the callback runs on the communication thread.
    static std::map<int, int>& reports();
    static int countReport(int portId, int hostKey, int hostSubKey, int status);
    static int ignoreList(QList<RW_VAR>* list, int hostKey, int flag);

private:
    void answer(const Protocol& request, bool lost);
    void count(const RW_VAR& result);

    std::vector<std::thread> m_threads;
    std::atomic<bool> m_othersDone{false};
};

#endif
