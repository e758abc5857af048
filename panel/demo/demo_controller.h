// SPDX-License-Identifier: MIT
/// \file
/// \brief The demo's simulated controller, spoken of in areas and elements.
#ifndef PANEL_DEMO_DEMO_CONTROLLER_H
#define PANEL_DEMO_DEMO_CONTROLLER_H

#include "runtime/model/variable.h"
#include "simulator/simulated_controller.h"

#include <array>
#include <atomic>
#include <vector>

namespace plc
{

/// Any thread may call any function.
class DemoController
{
public:
    DemoController();

    /// \throws std::runtime_error when no port can be opened
    void start() { m_controller.start(); }
    int port() const { return m_controller.port(); }

    /// Puts values into the controller's memory; \a variable names its station.
    void set(const Variable& variable, const std::vector<quint32>& values);

    /// \return what the controller's memory holds
    std::vector<quint32> get(const Variable& variable);

    /// \return where the elements are, e.g. "registers 100..102"
    static QString placeText(const Variable& variable);

    /// A silent station does nothing and answers nothing.
    void setSilent(int station, bool silent) { m_controller.setSilent(station, silent); }

    /// Requests that came for a station since the start.
    long requestsTo(int station) const { return m_requests[static_cast<std::size_t>(station)]; }

    long requests() const { return static_cast<long>(m_controller.requests()); }

private:
    void setElement(int station, int area, int element, quint32 value);
    quint32 element(int station, int area, int element);

    std::array<std::atomic<long>, 256> m_requests{};
    simulator::SimulatedController m_controller;
};

} // namespace plc

#endif
