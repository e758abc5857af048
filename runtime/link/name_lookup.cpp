// SPDX-License-Identifier: MIT
#include "runtime/link/name_lookup.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

namespace plc
{

namespace
{

// How long a wait may keep stop() waiting.
const std::chrono::milliseconds slice(20);

NameLookup::Answer answerTo(const NameLookup::Ask& ask, const std::string& host)
try {
    return ask(host);
} catch (const std::bad_alloc&) {
    return {{}, std::make_error_code(std::errc::not_enough_memory)};
}

} // namespace

struct NameLookup::Awaited {
    void take(const Answer& given)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        answer = given;
        came.notify_all();
    }

    std::optional<Answer> wait(int timeoutMs, const std::atomic<bool>& stopping)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
        std::unique_lock<std::mutex> lock(mutex);
        while (!answer && !stopping && std::chrono::steady_clock::now() < end)
            came.wait_for(lock, slice);
        return answer;
    }

    std::mutex mutex;
    std::condition_variable came;
    std::optional<Answer> answer;
};

std::optional<NameLookup::Answer> NameLookup::addressesOf(const std::string& host, int timeoutMs,
                                                          const std::atomic<bool>& stopping)
{
    if (!m_awaited) {
        const auto awaited = std::make_shared<Awaited>();
        std::thread([awaited, ask = m_ask, host] { awaited->take(answerTo(ask, host)); }).detach();
        m_awaited = awaited;
    }
    const std::optional<Answer> answer = m_awaited->wait(timeoutMs, stopping);
    if (answer)
        m_awaited.reset(); // addresses change: the next connection asks again
    return answer;
}

} // namespace plc
