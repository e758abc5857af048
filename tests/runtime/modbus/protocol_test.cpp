// SPDX-License-Identifier: MIT
// The numbers of Modbus, against those of libmodbus.

#include "runtime/modbus/protocol.h"

#include <gtest/gtest.h>

#include <modbus.h>

namespace
{

using namespace plc;

TEST(Protocol, LimitsAreThoseOfModbus)
{
    EXPECT_EQ(mostCoilsRead, MODBUS_MAX_READ_BITS);
    EXPECT_EQ(mostRegistersRead, MODBUS_MAX_READ_REGISTERS);
    EXPECT_EQ(mostRegistersWritten, MODBUS_MAX_WRITE_REGISTERS);
    EXPECT_EQ(headerToLength + longestLength, MODBUS_TCP_MAX_ADU_LENGTH);
    EXPECT_EQ(broadcastStation, MODBUS_BROADCAST_ADDRESS);
}

TEST(Protocol, FunctionCodesAreThoseOfModbus)
{
    EXPECT_EQ(ReadCoils, MODBUS_FC_READ_COILS);
    EXPECT_EQ(ReadRegisters, MODBUS_FC_READ_HOLDING_REGISTERS);
    EXPECT_EQ(WriteCoil, MODBUS_FC_WRITE_SINGLE_COIL);
    EXPECT_EQ(WriteRegister, MODBUS_FC_WRITE_SINGLE_REGISTER);
    EXPECT_EQ(WriteRegisters, MODBUS_FC_WRITE_MULTIPLE_REGISTERS);
}

TEST(Protocol, ExceptionsAreThoseOfModbus)
{
    EXPECT_EQ(static_cast<int>(Acknowledge), MODBUS_EXCEPTION_ACKNOWLEDGE);
    EXPECT_EQ(static_cast<int>(DeviceBusy), MODBUS_EXCEPTION_SLAVE_OR_SERVER_BUSY);
    EXPECT_EQ(static_cast<int>(GatewayPathUnavailable), MODBUS_EXCEPTION_GATEWAY_PATH);
    EXPECT_EQ(static_cast<int>(GatewayTargetSilent), MODBUS_EXCEPTION_GATEWAY_TARGET);
}

} // namespace
