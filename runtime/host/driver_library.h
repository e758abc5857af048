// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver as a runtime has it: loaded by path, looked up by name.
#ifndef RUNTIME_HOST_DRIVER_LIBRARY_H
#define RUNTIME_HOST_DRIVER_LIBRARY_H

#include "driver/plcdriver.h"

#include <QLibrary>

namespace plc
{

/// The fourteen entry points, under the names that they are looked up by; see driver/plcdriver.h.
struct DriverCalls {
    decltype(&::SetComInfo) SetComInfo = nullptr;
    decltype(&::RegistCallBackFuncIntf) RegistCallBackFuncIntf = nullptr;
    decltype(&::FlashLocalRegister) FlashLocalRegister = nullptr;
    decltype(&::QueryFinishFlag) QueryFinishFlag = nullptr;
    decltype(&::ComCommunication) ComCommunication = nullptr;
    decltype(&::DataCom) DataCom = nullptr;
    decltype(&::PLCAddressChangeIntef) PLCAddressChangeIntef = nullptr;
    decltype(&::AddListReadVar) AddListReadVar = nullptr;
    decltype(&::AddListWriteVar) AddListWriteVar = nullptr;
    decltype(&::AddListOnceReadVar) AddListOnceReadVar = nullptr;
    decltype(&::ReCreatReadVarList) ReCreatReadVarList = nullptr;
    decltype(&::EnCommStation) EnCommStation = nullptr;
    decltype(&::SetRegisterData) SetRegisterData = nullptr;
    decltype(&::GetRegisterData) GetRegisterData = nullptr;
};

/// Loads the driver for as long as it lives. The driver's state is one per process.
class DriverLibrary
{
public:
    /// \throws std::runtime_error naming the path, and the entry point if one is missing
    explicit DriverLibrary(const QString& path);
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    const DriverCalls& calls() const { return m_calls; }

private:
    QLibrary m_library;
    DriverCalls m_calls;
};

} // namespace plc

#endif
