// SPDX-License-Identifier: MIT
#include "threads.h"

#if __has_include(<valgrind/helgrind.h>)
#include <valgrind/helgrind.h>
#else
#define VALGRIND_HG_DISABLE_CHECKING(address, bytes)
#endif

namespace
{

// Under valgrind, on a busy machine; whoever waits longer hangs.
const auto LONGEST = std::chrono::minutes(10);

bool IsLost(Losses losses, int turn)
{
    return (losses == EVERY_OTHER_REPLY && turn % 2 == 1) ||
           (losses == THREE_OF_TEN_REPLIES && turn % 10 < 3);
}

bool QueuesAreEmpty()
{
    QMutexLocker lock(&PLC_driver.listMutex);
    return PLC_driver.writeList.isEmpty() && PLC_driver.onceReadList.isEmpty();
}

} // namespace

QByteArray AnswerTo(const Protocol& request)
{
    if (request.replyLength == 12)
        return request.frame.left(12);
    QByteArray reply = request.frame.left(8);
    reply.append(static_cast<char>(request.dataLength));
    reply.append(QByteArray(request.dataLength, '\x11'));
    return reply;
}

int NotOnce(const std::map<int, int>& seen, int firstKey, int count)
{
    int wrong = 0;
    for (int key = firstKey; key < firstKey + count; ++key) {
        const auto found = seen.find(key);
        wrong += found == seen.end() || found->second != 1;
    }
    return wrong;
}

int TornWords(const QByteArray& bytes)
{
    int torn = 0;
    for (int at = 0; at + 1 < bytes.size(); at += 2)
        torn += bytes.at(at) != bytes.at(at + 1);
    return torn;
}

void Threads::SetUp()
{
    CycleTest::SetUp();
    reports().clear();
    // An atomic, which helgrind takes for a plain number.
    VALGRIND_HG_DISABLE_CHECKING(&PLC_driver.communicationTurn, sizeof PLC_driver.communicationTurn);
    RegistCallBackFuncIntf(countReport, ignoreList);
}

void Threads::communicate(Losses losses)
{
    int turn = 0;
    const auto end = std::chrono::steady_clock::now() + LONGEST;
    while (std::chrono::steady_clock::now() < end) {
        const bool last = m_othersDone;
        const Protocol* next = ComCommunication();
        if (next)
            answer(*next, IsLost(losses, ++turn));
        if (last && QueuesAreEmpty())
            return;
        std::this_thread::yield(); // so that a tool that runs one thread at a time gives the others a turn
    }
    ADD_FAILURE() << "the queues did not run empty";
}

void Threads::joinAll()
{
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
    m_othersDone = true;
}

void Threads::beside(const std::vector<std::function<void()>>& work, Losses losses)
{
    std::thread communication([this, losses] { communicate(losses); });
    for (const std::function<void()>& each : work)
        run(each);
    joinAll();
    communication.join();
}

std::map<int, int>& Threads::reports()
{
    static std::map<int, int> reports;
    return reports;
}

int Threads::countReport(int, int hostKey, int, int status)
{
    reports()[hostKey] += status == 1 ? 1 : 1000;
    return 0;
}

int Threads::ignoreList(QList<RW_VAR>*, int, int)
{
    return 0;
}

void Threads::answer(const Protocol& request, bool lost)
{
    QByteArray reply = lost ? QByteArray() : AnswerTo(request);
    const int code = DataCom(&reply, reply.size())->result;
    const bool good = code == PLC_DONE || code == PLC_REMOTE_DONE;
    if (good == lost)
        ++failures;
    else if (good && PLC_driver.protocolList.isEmpty())
        count(PLC_driver.retVar);
}

void Threads::count(const RW_VAR& result)
{
    if (PLC_driver.requestKind == WRITE)
        ++writesDone[result.hostKey];
    else if (PLC_driver.requestKind == ONCE_READ)
        ++readsDone[result.hostKey];
}
