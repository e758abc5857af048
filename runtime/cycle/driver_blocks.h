// SPDX-License-Identifier: MIT
/// \file
/// \brief The blocks that the driver makes of a list of variables, without a controller.
#ifndef RUNTIME_CYCLE_DRIVER_BLOCKS_H
#define RUNTIME_CYCLE_DRIVER_BLOCKS_H

#include "driver/plcdriver.h"
#include "runtime/host/driver_library.h"
#include "runtime/model/settings.h"
#include "runtime/model/variable.h"

#include <QByteArray>

#include <vector>

namespace plc
{

struct DriverBlock {
    RW_VAR request;
    QByteArray frame;    ///< as the driver built it, number 0
    int replyLength = 0; ///< bytes of the reply that the driver expects
};

/// \return the elements that a block reads
Variable elementsOf(const DriverBlock& block);

/// Lets the driver go through one pass over its cyclic list, without a link. There must be no Runtime
/// meanwhile, because the driver's state is one per process.
class BlockPlanner
{
public:
    /// \throws std::runtime_error when the driver cannot be loaded
    explicit BlockPlanner(const Settings& settings);
    ~BlockPlanner();
    BlockPlanner(const BlockPlanner&) = delete;
    BlockPlanner& operator=(const BlockPlanner&) = delete;

    /// \param variables stations filled in, and nothing against any (readRefusal())
    /// \param maxBlockCount instead of that of the settings; one that breaks a limit of Modbus is taken too
    /// \return the block reads of a pass, in the driver's order
    std::vector<DriverBlock> blocks(const std::vector<Variable>& variables, int maxBlockCount);

private:
    std::vector<DriverBlock> onePass() const;

    Settings m_settings;
    COMINFO m_info = {};
    DriverLibrary m_library;
    const DriverCalls m_calls;
};

} // namespace plc

#endif
