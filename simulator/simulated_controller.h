// SPDX-License-Identifier: MIT
/// \file
/// \brief A Modbus TCP controller that misbehaves on demand, on loopback unless told otherwise.
///
///     simulator::SimulatedController controller;
///     controller.start();
///     connectTo("127.0.0.1", controller.port());
///     ...
///     EXPECT_EQ(controller.memory().holdingRegister(1, 100), 1234);
#ifndef SIMULATOR_SIMULATED_CONTROLLER_H
#define SIMULATOR_SIMULATED_CONTROLLER_H

#include "simulator/controller_memory.h"
#include "simulator/faults.h"
#include "simulator/frame_bytes.h"
#include "simulator/listen_address.h"
#include "simulator/remote_server.h"
#include "simulator/request_server.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace simulator
{

class Connection;
class ConnectionSet;
class FileDescriptor;

/// One request as it came in, or one reply with the fault that hit it.
struct TraceEntry {
    unsigned long connection; ///< 1 is the first since start()
    bool isReply;
    Fault fault;        ///< None for a request
    const Bytes& bytes; ///< as received; a reply as spoiled, empty if nothing is sent
};

struct Settings {
    int port = 0; ///< 0 picks a free one, see SimulatedController::port()
    FaultSettings faults = {};
    std::vector<AddressRange> refused = {};
    bool remote = false; ///< requests and replies are remote frames (remote_frame.h), not Modbus TCP
    std::function<void(const TraceEntry&)> trace = {}; ///< called on the controller's own thread
    std::string listenAddress = defaultListenAddress;  ///< in digits, see listenOn()
    int delayMs = 0;                   ///< how long every reply takes; they stay in their order
    std::vector<int> silentUnits = {}; ///< see SimulatedController::setSilent()
};

/// Listens on Settings::listenAddress and serves up to 64 connections at once (a further one waits for its turn) on one
/// thread of its own. Requests of a connection are executed in the order of their arrival. A frame of
/// another protocol or with an impossible length closes its connection. The kinds of request served and
/// refused are those of RequestServer, the faults those of faults.h. With remote frames RemoteServer serves
/// them, RemoteStream finds them, and a bad one is only counted.
///
/// Every function may be called from any thread, except that stop() and the destructor must not be called
/// from Settings::trace.
class SimulatedController
{
public:
    /// Throws std::invalid_argument if port or faults are out of range.
    explicit SimulatedController(const Settings& settings = {});
    ~SimulatedController(); ///< stops
    SimulatedController(const SimulatedController&) = delete;
    SimulatedController& operator=(const SimulatedController&) = delete;

    /// Listens and serves from here on; does nothing while it runs. After stop() it takes the same port
    /// again, and the memory is as it was. Throws std::runtime_error with a message that says what to do.
    void start();

    /// Closes the port and every connection, then waits for the thread. May be called at any time.
    void stop();

    /// The port really bound; kept over stop(). 0 before the first start() of a controller that picks one.
    int port() const;

    ControllerMemory& memory();

    /// Holds for every request from now on, on open connections too; restarts the random sequences.
    /// Throws std::invalid_argument as checkFaults(), and then changes nothing.
    void setFaults(const FaultSettings& faults);

    /// A silent unit neither executes nor answers anything, as if switched off.
    void setSilent(int unit, bool silent);

    /// Whole requests received, those to silent units and broadcasts included.
    unsigned long requests() const;

    /// Remote frames with a wrong length or sum, which were neither executed nor answered.
    unsigned long badFrames() const;

    /// How many replies this fault has hit; for Fault::None those sent without one.
    unsigned long injected(Fault fault) const;

private:
    void run();
    void acceptInto(ConnectionSet& connections);
    void serve(Connection& connection);
    void handle(Connection& connection, const Bytes& request);
    Bytes answer(const Bytes& request);
    void spoilAndDeliver(Connection& connection, const Bytes& request, Bytes reply, FaultDraw draw);
    void deliver(Connection& connection, Bytes reply, const FaultDraw& draw);
    void trace(const TraceEntry& entry) const;

    const Settings m_settings;
    ControllerMemory m_memory;
    RequestServer m_server;
    RemoteServer m_remoteServer;
    FaultPlan m_plan;
    std::atomic<int> m_port;
    std::atomic<unsigned long> m_requests{0};
    std::atomic<unsigned long> m_badFrames{0};
    std::array<std::atomic<unsigned long>, faultKinds> m_injected{};

    std::mutex m_lifeMutex; // start() and stop() exclude each other
    std::unique_ptr<FileDescriptor> m_listener;
    std::unique_ptr<FileDescriptor> m_wake; // readable once the thread shall end
    std::thread m_thread;
    unsigned long m_accepted = 0; // the thread's own
};

} // namespace simulator

#endif
