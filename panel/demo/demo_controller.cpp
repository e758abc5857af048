// SPDX-License-Identifier: MIT
#include "panel/demo/demo_controller.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/model/modbus_address.h"

namespace plc
{

namespace
{

simulator::Settings settingsWith(const std::function<void(const simulator::TraceEntry&)>& trace)
{
    simulator::Settings settings;
    settings.trace = trace;
    return settings;
}

} // namespace

DemoController::DemoController()
    : m_controller(settingsWith([this](const simulator::TraceEntry& entry) {
          if (!entry.isReply && entry.bytes.size() > unitOffset)
              ++m_requests[entry.bytes[unitOffset]];
      }))
{
}

void DemoController::set(const Variable& variable, const std::vector<quint32>& values)
{
    for (int index = 0; index < variable.count; ++index)
        setElement(variable.station, variable.area, variable.element + index,
                   values[static_cast<std::size_t>(index)]);
}

std::vector<quint32> DemoController::get(const Variable& variable)
{
    std::vector<quint32> values;
    values.reserve(static_cast<std::size_t>(variable.count));
    for (int index = 0; index < variable.count; ++index)
        values.push_back(element(variable.station, variable.area, variable.element + index));
    return values;
}

void DemoController::setElement(int station, int area, int element, quint32 value)
{
    simulator::ControllerMemory& memory = m_controller.memory();
    const int address = modbusAddress(area, element);
    switch (kindOf(area)) {
    case ElementKind::Bit:
        return memory.setCoil(station, address, value != 0);
    case ElementKind::BitInWord: {
        const unsigned int mask = 1U << (element % bitsOfWord);
        const unsigned int others = memory.holdingRegister(station, address) & ~mask;
        return memory.setHoldingRegister(station, address,
                                         static_cast<quint16>(value != 0 ? others | mask : others));
    }
    case ElementKind::DoubleWord:
        memory.setHoldingRegister(station, address + 1, static_cast<quint16>(value >> 16));
        break;
    case ElementKind::Word:
        break;
    }
    memory.setHoldingRegister(station, address, static_cast<quint16>(value & 0xFFFF));
}

quint32 DemoController::element(int station, int area, int element)
{
    simulator::ControllerMemory& memory = m_controller.memory();
    const int address = modbusAddress(area, element);
    if (liesInCoils(area))
        return memory.coil(station, address) ? 1 : 0;
    const quint32 word = memory.holdingRegister(station, address);
    if (kindOf(area) == ElementKind::BitInWord)
        return word >> (element % bitsOfWord) & 1;
    if (kindOf(area) == ElementKind::DoubleWord)
        return static_cast<quint32>(memory.holdingRegister(station, address + 1)) << 16 | word;
    return word;
}

QString DemoController::placeText(const Variable& variable)
{
    const int first = modbusAddress(variable.area, variable.element);
    int last = modbusAddress(variable.area, variable.element + variable.count - 1);
    if (kindOf(variable.area) == ElementKind::DoubleWord)
        ++last;
    const QString kind = QLatin1String(liesInCoils(variable.area) ? "coil" : "register");
    if (kindOf(variable.area) == ElementKind::BitInWord)
        return QStringLiteral("%1 %2, bit %3").arg(kind).arg(first).arg(variable.element % bitsOfWord);
    return first == last ? QStringLiteral("%1 %2").arg(kind).arg(first)
                         : QStringLiteral("%1s %2..%3").arg(kind).arg(first).arg(last);
}

} // namespace plc
