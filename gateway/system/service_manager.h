// SPDX-License-Identifier: MIT
/// \file
/// \brief What the system's service manager is told: ready, how it goes, alive, stopping.
#ifndef GATEWAY_SYSTEM_SERVICE_MANAGER_H
#define GATEWAY_SYSTEM_SERVICE_MANAGER_H

#include <QByteArray>
#include <QString>

namespace plc
{

/// Speaks to systemd by datagrams to the socket that it names. Where nobody started the program so, nothing is sent.
/// No call waits.
class ServiceManager
{
public:
    /// As the environment says: NOTIFY_SOCKET, WATCHDOG_USEC and WATCHDOG_PID.
    ServiceManager();

    /// \param socket a path, or a name that begins with @; empty: nobody listens
    ServiceManager(const QByteArray& socket, qint64 watchdogMs);
    ~ServiceManager();
    ServiceManager(const ServiceManager&) = delete;
    ServiceManager& operator=(const ServiceManager&) = delete;

    /// After it the service counts as started.
    void ready();

    /// One line for people, shown by systemctl status. The same again is not sent.
    void status(const QString& words);
    void stopping();
    void alive();

    /// \return how often alive() is expected at least; 0: never
    qint64 watchdogMs() const { return m_watchdogMs; }

private:
    void send(const QByteArray& message) const;

    QByteArray m_socket;
    qint64 m_watchdogMs = 0;
    int m_descriptor = -1;
    QString m_status;
};

/// Says that the program is alive as long as both of its threads are: the one that calls look(), by doing so, and the
/// one that polls, by going round.
class Watchdog
{
public:
    /// \param longestRoundMs a polling thread that takes longer for one round is stuck
    Watchdog(ServiceManager* manager, qint64 longestRoundMs);

    /// To be called again and again, several times in ServiceManager::watchdogMs().
    /// \param rounds of the polling thread so far \param nowMs by a clock that never goes back
    void look(quint32 rounds, qint64 nowMs);

private:
    ServiceManager* const m_manager;
    const qint64 m_longestRoundMs;
    bool m_began = false;
    quint32 m_rounds = 0;
    qint64 m_movedMs = 0; // when the rounds were others for the last time
    qint64 m_dueMs = 0;
};

} // namespace plc

#endif
