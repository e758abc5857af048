// SPDX-License-Identifier: MIT
/// \file
/// \brief plcsim, or another server, in a process of its own, as long as the object lives.
#ifndef BENCH_LOOPBACK_CONTROLLER_H
#define BENCH_LOOPBACK_CONTROLLER_H

#include <QProcess>

namespace bench
{

class LoopbackController
{
public:
    /// plcsim. \throws std::runtime_error when the program cannot be started
    LoopbackController();

    /// A program whose first line of output ends with ":PORT". \throws std::runtime_error as above
    LoopbackController(const QString& program, const QStringList& arguments);
    ~LoopbackController();
    LoopbackController(const LoopbackController&) = delete;
    LoopbackController& operator=(const LoopbackController&) = delete;

    /// Of 127.0.0.1.
    int port() const { return m_port; }

    qint64 process() const { return m_process.processId(); }

private:
    QProcess m_process;
    int m_port = 0;
};

} // namespace bench

#endif
