// SPDX-License-Identifier: MIT
/// \file
/// \brief A Modbus TCP server of libmodbus, on loopback and on a thread of its own.
#ifndef TESTS_PANEL_PEERS_LIBMODBUS_SERVER_H
#define TESTS_PANEL_PEERS_LIBMODBUS_SERVER_H

#include <QString>

#include <modbus.h>

#include <atomic>
#include <memory>
#include <thread>

namespace test
{

/// Holds all 65536 coils and registers. Its replies are libmodbus's alone. Serves from construction to destruction.
class LibmodbusServer
{
public:
    LibmodbusServer();
    ~LibmodbusServer();
    LibmodbusServer(const LibmodbusServer&) = delete;
    LibmodbusServer& operator=(const LibmodbusServer&) = delete;

    /// \return what is to be installed for it: nothing, the tests are linked with it
    static QString missing() { return QString(); }

    /// \return it as plcpanel's --controller takes it
    QString controller() const;

    /// The memory. Not to be touched while a request is on its way.
    int coil(int address) const;
    int word(int address) const; ///< of the holding registers
    void setCoil(int address, int value);
    void setWord(int address, int value);

private:
    void serve();
    bool answerNext(modbus_t* context);
    int port() const;

    using Context = std::unique_ptr<modbus_t, decltype(&modbus_free)>;
    using Mapping = std::unique_ptr<modbus_mapping_t, decltype(&modbus_mapping_free)>;

    const Context m_context;
    const Mapping m_memory;
    int m_listener;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

} // namespace test

#endif
