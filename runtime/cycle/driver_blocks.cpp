// SPDX-License-Identifier: MIT
#include "runtime/cycle/driver_blocks.h"

#include "runtime/cycle/cyclic_values.h"
#include "runtime/host/driver_settings.h"
#include "runtime/modbus/request_pieces.h"

namespace plc
{

Variable elementsOf(const DriverBlock& block)
{
    Variable elements;
    elements.area = block.request.area;
    elements.element = block.request.address;
    elements.count = elementsRead(block.request.area, block.request.count);
    elements.station = block.request.station;
    return elements;
}

BlockPlanner::BlockPlanner(const Settings& settings)
    : m_settings(settings), m_library(settings.driverPath), m_calls(m_library.calls())
{
    m_calls.SetComInfo(&m_info);
}

BlockPlanner::~BlockPlanner()
{
    m_calls.SetComInfo(nullptr);
}

std::vector<DriverBlock> BlockPlanner::blocks(const std::vector<Variable>& variables, int maxBlockCount)
{
    if (variables.empty())
        return {};
    m_settings.maxBlockCount = maxBlockCount;
    m_info = driverSettings(m_settings);
    CyclicValues::queue(refreshPlan(variables, m_settings), m_calls);
    return onePass();
}

/// Each frame is answered well, by its length, and without bytes: what would be filed nobody reads, and with
/// several stations the driver looks for each element among all. The pacing request, which ends
/// the pass, is answered as well, so that none is pending when the next pass begins.
std::vector<DriverBlock> BlockPlanner::onePass() const
{
    std::vector<DriverBlock> blocks;
    for (bool isOver = false; !isOver;) {
        const Protocol* protocol = m_calls.ComCommunication();
        if (protocol == nullptr)
            return blocks;
        isOver = CyclicValues::isPacing(protocol->var);
        if (!isOver)
            blocks.push_back({protocol->var, protocol->frame, protocol->replyLength});
        QByteArray nothing;
        m_calls.DataCom(&nothing, protocol->replyLength);
    }
    return blocks;
}

} // namespace plc
