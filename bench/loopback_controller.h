/// \file
/// \brief plcsim in a process of its own, as long as the object lives.
#ifndef BENCH_LOOPBACK_CONTROLLER_H
#define BENCH_LOOPBACK_CONTROLLER_H

#include <QProcess>

namespace bench
{

class LoopbackController
{
public:
    /// \throws std::runtime_error when the program cannot be started
    LoopbackController();
    ~LoopbackController();
    LoopbackController(const LoopbackController&) = delete;
    LoopbackController& operator=(const LoopbackController&) = delete;

    /// Of 127.0.0.1.
    int port() const { return m_port; }

private:
    QProcess m_process;
    int m_port = 0;
};

} // namespace bench

#endif
