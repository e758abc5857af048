// SPDX-License-Identifier: MIT
/// \file
/// \brief A Modbus TCP server of pymodbus, on loopback and in a process of its own.
#ifndef TESTS_PANEL_PEERS_PYMODBUS_SERVER_H
#define TESTS_PANEL_PEERS_PYMODBUS_SERVER_H

#include <QProcess>
#include <QString>

namespace test
{

/// Holds all 65536 coils and registers (pymodbus_server.py). Serves from construction to destruction.
class PymodbusServer
{
public:
    PymodbusServer();
    ~PymodbusServer();
    PymodbusServer(const PymodbusServer&) = delete;
    PymodbusServer& operator=(const PymodbusServer&) = delete;

    /// \return what is to be installed for it; empty when nothing is
    static QString missing();

    /// \return it as plcpanel's --controller takes it
    QString controller() const { return m_controller; }

    int coil(int address) { return ask("coil", address); }
    int word(int address) { return ask("word", address); } ///< of the holding registers
    void setCoil(int address, int value) { ask("coil", address, value); }
    void setWord(int address, int value) { ask("word", address, value); }

private:
    int ask(const char* kind, int address, int valueToSet = -1);
    QByteArray nextLine();

    QProcess m_process;
    QString m_controller;
};

} // namespace test

#endif
