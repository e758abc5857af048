// SPDX-License-Identifier: MIT
#include "runtime/host/driver_values.h"

#include "runtime/modbus/request_pieces.h"

namespace plc
{

std::vector<quint32> valuesInDriver(const DriverCalls& calls, const Variable& variable)
{
    QString address = addressText(variable.area, variable.element);
    QByteArray bytes;
    calls.GetRegisterData(0, variable.area, &address, variable.station, &bytes,
                          driverReadCount(variable.area, variable.count));
    return valuesOfBytes(variable.area, bytes);
}

} // namespace plc
