// SPDX-License-Identifier: MIT
// Where the areas lie in the controller.

#include "runtime/model/modbus_address.h"

#include "runtime/model/variable.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

struct Place {
    const char* variable;
    bool coil;
    int address;
};

const Place places[] = {
    {"0:0", true, 0xF800},   {"1:17", true, 0xFC0F},  {"2:5", true, 5},          {"3:1", true, 0x2401},
    {"4:1", true, 0xE001},   {"5:1", true, 0xF001},   {"6:1", true, 0xF401},     {"7:8001", true, 0x1F41},
    {"8:10.3", false, 10},   {"9:10", false, 10},     {"10:1", false, 0x3001},   {"11:1", false, 0x2401},
    {"12:1", false, 0xF001}, {"13:1", false, 0xF401}, {"14:200", false, 0xF700}, {"14:201", false, 0xF702},
};

TEST(ModbusAddress, IsWhereTheElementLies)
{
    for (const Place& place : places) {
        QString error;
        const auto variable = parseVariable(QLatin1String(place.variable), &error);
        ASSERT_TRUE(variable) << place.variable;
        EXPECT_EQ(modbusAddress(variable->area, variable->element), place.address) << place.variable;
        EXPECT_EQ(liesInCoils(variable->area), place.coil) << place.variable;
    }
}

TEST(ModbusAddress, GoesOnFromTheBeginningBehindTheLastOne)
{
    EXPECT_EQ(modbusAddress(14, 0x0900), 0x0900);
}

} // namespace
