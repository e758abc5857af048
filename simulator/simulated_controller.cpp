// SPDX-License-Identifier: MIT
#include "simulator/simulated_controller.h"

#include "simulator/connection_set.h"
#include "simulator/file_descriptor.h"
#include "simulator/modbus_request.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace simulator
{

namespace
{

std::string failure(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

int checkedPort(int port)
{
    if (port < 0 || port > 65535)
        throw std::invalid_argument("port " + std::to_string(port) +
                                    " does not exist: choose 1 to 65535, or 0 for a free one");
    return port;
}

std::unique_ptr<FileDescriptor> wakeEvent()
{
    auto event = std::make_unique<FileDescriptor>(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (event->number() < 0)
        throw std::runtime_error(failure("cannot create an event"));
    return event;
}

ReplyKind remoteReplyKind(const Bytes& request)
{
    return request.size() == remoteReadSize ? ReplyKind::ToRead : ReplyKind::ToWrite;
}

std::size_t indexOf(Fault fault)
{
    return static_cast<std::size_t>(fault);
}

} // namespace

SimulatedController::SimulatedController(const Settings& settings)
    : m_settings(settings), m_memory(settings.faults.seed), m_server(m_memory, settings.refused),
      m_remoteServer(m_memory, settings.refused, [this](int unit) { return m_server.answers(unit); }),
      m_plan(settings.faults), m_port(checkedPort(settings.port))
{
    if (settings.delayMs < 0)
        throw std::invalid_argument("the delay of every reply must not be negative");
    for (const int unit : settings.silentUnits)
        m_server.setSilent(unit, true);
}

SimulatedController::~SimulatedController()
{
    stop();
}

void SimulatedController::start()
{
    const std::lock_guard<std::mutex> lock(m_lifeMutex);
    if (m_thread.joinable())
        return;
    m_listener = listenOn(m_settings.listenAddress, m_port);
    m_wake = wakeEvent();
    m_port = portOf(*m_listener);
    m_accepted = 0;
    m_thread = std::thread([this] { run(); });
}

void SimulatedController::stop()
{
    const std::lock_guard<std::mutex> lock(m_lifeMutex);
    if (!m_thread.joinable())
        return;
    eventfd_write(m_wake->number(), 1);
    m_thread.join();
    m_listener.reset();
    m_wake.reset();
}

int SimulatedController::port() const
{
    return m_port;
}

ControllerMemory& SimulatedController::memory()
{
    return m_memory;
}

void SimulatedController::setFaults(const FaultSettings& faults)
{
    m_plan.restart(faults);
}

void SimulatedController::setSilent(int unit, bool silent)
{
    m_server.setSilent(unit, silent);
}

unsigned long SimulatedController::requests() const
{
    return m_requests;
}

unsigned long SimulatedController::badFrames() const
{
    return m_badFrames;
}

unsigned long SimulatedController::injected(Fault fault) const
{
    return m_injected[indexOf(fault)];
}

void SimulatedController::run()
{
    ConnectionSet connections(m_wake->number(), m_listener->number());
    for (auto work = connections.wait(); !work.isOver; work = connections.wait()) {
        for (Connection* const connection : work.ready) {
            serve(*connection);
            connections.settle(*connection);
        }
        if (work.isConnecting)
            acceptInto(connections);
    }
}

void SimulatedController::acceptInto(ConnectionSet& connections)
{
    FileDescriptor socket(accept4(m_listener->number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.number() >= 0)
        connections.add(std::make_unique<Connection>(std::move(socket), ++m_accepted, m_settings.remote,
                                                     std::chrono::milliseconds(m_settings.delayMs)));
}

void SimulatedController::serve(Connection& connection)
{
    connection.receive();
    while (!connection.isOver()) {
        const unsigned long badBefore = connection.badFrames();
        const auto request = connection.nextRequest();
        m_badFrames += connection.badFrames() - badBefore;
        if (!request)
            break;
        handle(connection, *request);
        connection.send(); // before the next request may close the connection
    }
    connection.send();
}

void SimulatedController::handle(Connection& connection, const Bytes& request)
{
    ++m_requests;
    trace({connection.number(), false, Fault::None, request});
    const std::size_t unit = request[m_settings.remote ? remoteStationOffset : unitOffset];
    if (!m_server.answers(static_cast<int>(unit))) {
        answer(request); // a broadcast is executed; there is no reply that a fault could hit
        return;
    }
    const FaultDraw draw = m_plan.draw(connection.faults());
    if (m_settings.remote && !isExecuted(draw.fault))
        return deliver(connection, {}, draw); // remote frames know no exceptions
    Bytes reply = isExecuted(draw.fault) ? answer(request) : m_server.refuse(request, deviceFailure);
    if (!reply.empty()) // the unit may have become silent meanwhile, or a remote request cannot be served
        spoilAndDeliver(connection, request, std::move(reply), draw);
}

Bytes SimulatedController::answer(const Bytes& request)
{
    return m_settings.remote ? m_remoteServer.answer(request) : m_server.answer(request);
}

void SimulatedController::spoilAndDeliver(Connection& connection, const Bytes& request, Bytes reply,
                                          FaultDraw draw)
{
    const ReplyKind kind = m_settings.remote ? remoteReplyKind(request) : replyKindOf(reply);
    if (!canHit(draw.fault, kind))
        draw.fault = Fault::None;
    if (draw.fault == Fault::PaddedException)
        reply = padded(std::move(reply), expectedReplySize(request), draw);
    deliver(connection, spoil(std::move(reply), draw, kind), draw);
}

void SimulatedController::deliver(Connection& connection, Bytes reply, const FaultDraw& draw)
{
    ++m_injected[indexOf(draw.fault)];
    if (draw.fault == Fault::NoReply || draw.fault == Fault::Close)
        reply.clear();
    trace({connection.number(), true, draw.fault, reply});
    if (draw.fault == Fault::Close)
        connection.close();
    else if (!reply.empty())
        connection.reply(std::move(reply), draw);
}

void SimulatedController::trace(const TraceEntry& entry) const
{
    if (m_settings.trace)
        m_settings.trace(entry);
}

} // namespace simulator
