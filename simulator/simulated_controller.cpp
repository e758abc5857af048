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
    : settings_(settings), memory_(settings.faults.seed), server_(memory_, settings.refused),
      remoteServer_(memory_, settings.refused, [this](int unit) { return server_.answers(unit); }),
      plan_(settings.faults), port_(checkedPort(settings.port))
{
    if (settings.delayMs < 0)
        throw std::invalid_argument("the delay of every reply must not be negative");
    for (const int unit : settings.silentUnits)
        server_.setSilent(unit, true);
}

SimulatedController::~SimulatedController()
{
    stop();
}

void SimulatedController::start()
{
    const std::lock_guard<std::mutex> lock(lifeMutex_);
    if (thread_.joinable())
        return;
    listener_ = listenOn(settings_.listenAddress, port_);
    wake_ = wakeEvent();
    port_ = portOf(*listener_);
    accepted_ = 0;
    thread_ = std::thread([this] { run(); });
}

void SimulatedController::stop()
{
    const std::lock_guard<std::mutex> lock(lifeMutex_);
    if (!thread_.joinable())
        return;
    eventfd_write(wake_->number(), 1);
    thread_.join();
    listener_.reset();
    wake_.reset();
}

int SimulatedController::port() const
{
    return port_;
}

ControllerMemory& SimulatedController::memory()
{
    return memory_;
}

void SimulatedController::setFaults(const FaultSettings& faults)
{
    plan_.restart(faults);
}

void SimulatedController::setSilent(int unit, bool silent)
{
    server_.setSilent(unit, silent);
}

unsigned long SimulatedController::requests() const
{
    return requests_;
}

unsigned long SimulatedController::badFrames() const
{
    return badFrames_;
}

unsigned long SimulatedController::injected(Fault fault) const
{
    return injected_[indexOf(fault)];
}

void SimulatedController::run()
{
    ConnectionSet connections(wake_->number(), listener_->number());
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
    FileDescriptor socket(accept4(listener_->number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.number() >= 0)
        connections.add(std::make_unique<Connection>(std::move(socket), ++accepted_, settings_.remote,
                                                     std::chrono::milliseconds(settings_.delayMs)));
}

void SimulatedController::serve(Connection& connection)
{
    connection.receive();
    while (!connection.isOver()) {
        const unsigned long badBefore = connection.badFrames();
        const auto request = connection.nextRequest();
        badFrames_ += connection.badFrames() - badBefore;
        if (!request)
            break;
        handle(connection, *request);
        connection.send(); // before the next request may close the connection
    }
    connection.send();
}

void SimulatedController::handle(Connection& connection, const Bytes& request)
{
    ++requests_;
    trace({connection.number(), false, Fault::None, request});
    const std::size_t unit = request[settings_.remote ? remoteStationOffset : unitOffset];
    if (!server_.answers(static_cast<int>(unit))) {
        answer(request); // a broadcast is executed; there is no reply that a fault could hit
        return;
    }
    const FaultDraw draw = plan_.draw(connection.faults());
    if (settings_.remote && !isExecuted(draw.fault))
        return deliver(connection, {}, draw); // remote frames know no exceptions
    Bytes reply = isExecuted(draw.fault) ? answer(request) : server_.refuse(request, deviceFailure);
    if (!reply.empty()) // the unit may have become silent meanwhile, or a remote request cannot be served
        spoilAndDeliver(connection, request, std::move(reply), draw);
}

Bytes SimulatedController::answer(const Bytes& request)
{
    return settings_.remote ? remoteServer_.answer(request) : server_.answer(request);
}

void SimulatedController::spoilAndDeliver(Connection& connection, const Bytes& request, Bytes reply,
                                          FaultDraw draw)
{
    const ReplyKind kind = settings_.remote ? remoteReplyKind(request) : replyKindOf(reply);
    if (!canHit(draw.fault, kind))
        draw.fault = Fault::None;
    if (draw.fault == Fault::PaddedException)
        reply = padded(std::move(reply), expectedReplySize(request), draw);
    deliver(connection, spoil(std::move(reply), draw, kind), draw);
}

void SimulatedController::deliver(Connection& connection, Bytes reply, const FaultDraw& draw)
{
    ++injected_[indexOf(draw.fault)];
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
    if (settings_.trace)
        settings_.trace(entry);
}

} // namespace simulator
