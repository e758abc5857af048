// SPDX-License-Identifier: MIT
/// \file
/// \brief Ends the wait of another thread.
#ifndef GATEWAY_SERVICE_WAKE_H
#define GATEWAY_SERVICE_WAKE_H

#include <cstdint>
#include <stdexcept>

#include <sys/eventfd.h>
#include <unistd.h>

namespace plc
{

class Wake
{
public:
    Wake() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (m_descriptor < 0)
            throw std::runtime_error("eventfd() fails");
    }
    ~Wake() { close(m_descriptor); }
    Wake(const Wake&) = delete;
    Wake& operator=(const Wake&) = delete;

    /// \return what poll() waits for; it can be read from wake() to take()
    int descriptor() const { return m_descriptor; }

    /// Any thread.
    void wake() const
    {
        const std::uint64_t one = 1;
        const auto written = write(m_descriptor, &one, sizeof one); // a full one wakes as well
        static_cast<void>(written);
    }

    void take() const
    {
        std::uint64_t count = 0;
        const auto taken = read(m_descriptor, &count, sizeof count);
        static_cast<void>(taken);
    }

private:
    const int m_descriptor;
};

} // namespace plc

#endif
