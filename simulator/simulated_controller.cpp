#include "simulator/simulated_controller.h"

#include "simulator/connection.h"
#include "simulator/file_descriptor.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace simulator
{

namespace
{

constexpr std::size_t mostConnections = 64;
constexpr std::size_t ownEntries = 2; // of the controller itself, polled besides its connections
constexpr unsigned deviceFailure = 4; // the exception of Fault::Exception

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

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

std::string bindFailure(int port)
{
    const std::string name = "port " + std::to_string(port) + " of 127.0.0.1";
    if (errno == EADDRINUSE)
        return name + " is already in use: stop the program that listens there, or choose another port (0 "
                      "picks a free one)";
    if (errno == EACCES)
        return name + " is not open to you: choose a port above 1023 (0 picks a free one)";
    return failure("cannot listen on " + name);
}

std::unique_ptr<FileDescriptor> listenOn(int port)
{
    auto listener =
        std::make_unique<FileDescriptor>(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (listener->number() < 0)
        throw std::runtime_error(failure("cannot create a socket"));
    const int on = 1; // a port whose last connections are still dying may be taken again
    setsockopt(listener->number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (bind(listener->number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener->number(), SOMAXCONN) != 0)
        throw std::runtime_error(bindFailure(port));
    return listener;
}

int portOf(const FileDescriptor& listener)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (getsockname(listener.number(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error(failure("cannot find out the port"));
    return ntohs(address.sin_port);
}

std::unique_ptr<FileDescriptor> wakeEvent()
{
    auto event = std::make_unique<FileDescriptor>(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (event->number() < 0)
        throw std::runtime_error(failure("cannot create an event"));
    return event;
}

// How long to sleep until `due`, for ppoll(): a null pointer if there is nothing to wake up for.
const timespec* sleepUntil(const std::optional<ReplyQueue::Time>& due, timespec& pause)
{
    if (!due)
        return nullptr;
    using namespace std::chrono;
    const auto rest = std::max(nanoseconds(0), duration_cast<nanoseconds>(*due - ReplyQueue::Clock::now()));
    pause.tv_sec = static_cast<time_t>(duration_cast<seconds>(rest).count());
    pause.tv_nsec = static_cast<long>((rest % seconds(1)).count());
    return &pause;
}

std::size_t indexOf(Fault fault)
{
    return static_cast<std::size_t>(fault);
}

} // namespace

SimulatedController::SimulatedController(const Settings& settings)
    : settings_(settings), server_(memory_, settings.refused),
      remoteServer_(memory_, settings.refused, [this](int unit) { return server_.answers(unit); }),
      plan_(settings.faults), port_(checkedPort(settings.port))
{
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
    listener_ = listenOn(port_);
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
    Connections connections;
    for (Work work = waitForWork(connections); !work.isOver; work = waitForWork(connections)) {
        for (const auto& connection : connections)
            serve(*connection);
        connections.erase(std::remove_if(connections.begin(), connections.end(),
                                         [](const auto& connection) { return connection->isOver(); }),
                          connections.end());
        if (work.isConnecting)
            acceptInto(connections);
    }
}

// Sleeps until something comes in, can go out or is due, and tells each connection what happened.
SimulatedController::Work SimulatedController::waitForWork(const Connections& connections) const
{
    const int listener = connections.size() < mostConnections ? listener_->number() : -1;
    std::vector<pollfd> entries = {{wake_->number(), POLLIN, 0}, {listener, POLLIN, 0}};
    std::optional<ReplyQueue::Time> first;
    for (const auto& connection : connections) {
        entries.push_back({connection->socket(), connection->wanted(), 0});
        if (const auto due = connection->wakeAt())
            first = first ? std::min(*first, *due) : *due;
    }
    timespec pause{};
    ppoll(entries.data(), entries.size(), sleepUntil(first, pause), nullptr);
    for (std::size_t i = 0; i < connections.size(); ++i)
        connections[i]->setHappened(entries[ownEntries + i].revents);
    return {entries[0].revents != 0, entries[1].revents != 0};
}

void SimulatedController::acceptInto(Connections& connections)
{
    FileDescriptor socket(accept4(listener_->number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.number() >= 0)
        connections.push_back(std::make_unique<Connection>(std::move(socket), ++accepted_, settings_.remote));
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
    if (settings_.remote && draw.fault == Fault::Exception)
        return deliver(connection, {}, draw); // remote frames know no exceptions
    Bytes reply = spoiledAnswer(request, draw);
    if (!reply.empty()) // the unit may have become silent meanwhile, or a remote request cannot be served
        deliver(connection, std::move(reply), draw);
}

Bytes SimulatedController::answer(const Bytes& request)
{
    return settings_.remote ? remoteServer_.answer(request) : server_.answer(request);
}

Bytes SimulatedController::spoiledAnswer(const Bytes& request, const FaultDraw& draw)
{
    if (draw.fault == Fault::Exception)
        return server_.refuse(request, deviceFailure);
    Bytes reply = answer(request);
    if (reply.empty())
        return reply;
    return settings_.remote ? spoilRemote(std::move(reply), draw, request.size() == remoteReadSize)
                            : spoil(std::move(reply), draw);
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
