// SPDX-License-Identifier: MIT
/// \file
/// \brief How the gateway is, told to systemd and to plcgateway --status.
#ifndef GATEWAY_SERVICE_SERVICE_REPORT_H
#define GATEWAY_SERVICE_SERVICE_REPORT_H

#include "gateway/options/gateway_options.h"
#include "gateway/session/figures.h"
#include "gateway/status/status_socket.h"
#include "gateway/system/service_manager.h"

namespace plc
{

/// Of one thread, the one that publishes.
class ServiceReport
{
public:
    /// \param options has to live longer than this
    explicit ServiceReport(const GatewayOptions& options);

    /// After the spool was opened, which no other gateway has then: begins to answer --status in the folder that
    /// systemd made for it, or else in that of the state.
    /// \return why nobody can ask; empty when they can
    QString open();

    void ready() { m_manager.ready(); }
    void stopping() { m_manager.stopping(); }

    /// To be called again and again: feeds the watchdog. \param rounds Runtime::rounds()
    void look(quint32 rounds);

    /// \return true when tell() was not called for a while
    bool isDue() const;
    void tell(const GatewayFigures& figures);

private:
    const GatewayOptions& m_options;
    ServiceManager m_manager;
    Watchdog m_watchdog;
    StatusServer m_status;
    const qint64 m_startedAt;
    qint64 m_toldMs = -1;
};

} // namespace plc

#endif
