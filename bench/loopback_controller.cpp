// SPDX-License-Identifier: MIT
#include "bench/loopback_controller.h"

#include <stdexcept>

namespace bench
{

namespace
{

const int startMs = 10000;

} // namespace

LoopbackController::LoopbackController()
    : LoopbackController(QStringLiteral(PLCSIM_PROGRAM), {QStringLiteral("--quiet")})
{
}

LoopbackController::LoopbackController(const QString& program, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(startMs) || !m_process.waitForReadyRead(startMs))
        throw std::runtime_error("a server does not start: " + program.toStdString());
    const QByteArray line = m_process.readLine().trimmed(); // "listening on 127.0.0.1:PORT"
    m_port = line.mid(line.lastIndexOf(':') + 1).toInt();
    if (m_port == 0)
        throw std::runtime_error("the server says no port, but: " + line.toStdString());
}

LoopbackController::~LoopbackController()
{
    m_process.terminate();
    m_process.waitForFinished();
}

} // namespace bench
