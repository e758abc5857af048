// SPDX-License-Identifier: MIT
/// \file
/// \brief Looking up a host's addresses without waiting for a name server that is silent.
#ifndef RUNTIME_LINK_NAME_LOOKUP_H
#define RUNTIME_LINK_NAME_LOOKUP_H

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace plc
{

/// The system's call for it may last half a minute and cannot be ended. So it is made on a thread of its own, which
/// nobody waits for longer than he wants. There is one such thread at a time; it may outlive the object, and uses
/// nothing of it. Not thread-safe.
class NameLookup
{
public:
    struct Answer {
        std::vector<std::string> addresses; ///< as numbers; empty: see error
        std::error_code error;
    };
    using Ask = std::function<Answer(const std::string& host)>;

    /// \param ask may take as long as it likes, on any thread
    explicit NameLookup(Ask ask) : m_ask(std::move(ask)) {}

    /// Asks, unless an answer is still awaited that was asked for before.
    /// \return none when it has not come within \a timeoutMs, or as soon as \a stopping is true
    /// \throws std::system_error when there is no thread to be had
    std::optional<Answer> addressesOf(const std::string& host, int timeoutMs,
                                      const std::atomic<bool>& stopping);

private:
    struct Awaited;

    const Ask m_ask;
    std::shared_ptr<Awaited> m_awaited; // null: nobody was asked
};

} // namespace plc

#endif
