// SPDX-License-Identifier: MIT
#include "capture/rebuilt_request.h"

#include "runtime/host/request_keys.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/modbus_address.h"

#include <algorithm>
#include <map>

namespace plc
{

namespace
{

const int notFiled = 1; // RW_VAR::accessFlag of writes

/// What a frame asks for, before an area is chosen.
struct AskedFor {
    int function = 0;
    int unit = 0;
    int first = 0;
    int quantity = 0; // coils or registers
    bool isWrite = false;
    bool isCoils = false;
    QByteArray data; // of a write: one byte for a coil, two, the low one first, for a register
};

QByteArray littleEndian(const QByteArray& registers)
{
    QByteArray bytes;
    for (int at = 0; at + 1 < registers.size(); at += 2) {
        bytes.append(registers.at(at + 1));
        bytes.append(registers.at(at));
    }
    return bytes;
}

std::optional<AskedFor> askedFor(const QByteArray& frame)
{
    AskedFor asked;
    asked.function = byteAt(frame, functionOffset);
    asked.unit = byteAt(frame, unitOffset);
    asked.first = wordAt(frame, addressOffset);
    asked.quantity = wordAt(frame, quantityOffset);
    asked.isCoils = asked.function == ReadCoils || asked.function == WriteCoil;
    asked.isWrite = asked.function != ReadCoils && asked.function != ReadRegisters;
    switch (asked.function) {
    case ReadCoils:
    case ReadRegisters:
        break;
    case WriteCoil:
        asked.data = QByteArray(1, asked.quantity == coilOn ? '\1' : '\0');
        asked.quantity = 1;
        break;
    case WriteRegister:
        asked.data = littleEndian(frame.mid(singleValueOffset, 2));
        asked.quantity = 1;
        break;
    case WriteRegisters:
        asked.data = littleEndian(frame.mid(multipleValuesOffset));
        break;
    default:
        return std::nullopt;
    }
    const bool isWhole = frame.size() >= quantityOffset + 2 && asked.quantity > 0;
    return isWhole ? std::make_optional(asked) : std::nullopt;
}

/// Bits in words are read and written as their words.
bool serves(int area, const AskedFor& asked)
{
    if (kindOf(area) == ElementKind::BitInWord || liesInCoils(area) != asked.isCoils)
        return false;
    return !asked.isWrite || areaOf(area).isWritable;
}

/// \return how far the frame's first coil or register lies behind the beginning of \a area
int offsetIn(int area, const AskedFor& asked)
{
    return (asked.first - modbusAddress(area, 0)) & 0xFFFF;
}

/// \return the elements of \a area that a frame asks for; nothing when it does not ask for whole ones
std::optional<Variable> elementsIn(int area, const AskedFor& asked)
{
    const int places = placesOfElement(area);
    const int offset = offsetIn(area, asked);
    Variable elements;
    elements.area = area;
    elements.element = offset / places;
    elements.count = asked.quantity / places;
    elements.station = asked.unit;
    const bool isWhole = offset % places == 0 && asked.quantity % places == 0;
    return isWhole && endOf(elements) <= areaSize(area) ? std::make_optional(elements) : std::nullopt;
}

RW_VAR recordOf(const AskedFor& asked, const Variable& elements)
{
    RW_VAR request = {};
    request.hostKey = asked.isWrite ? writeKey : cyclicKey;
    request.accessFlag = asked.isWrite ? notFiled : 0;
    request.area = elements.area;
    request.address = elements.element;
    request.station = elements.station;
    request.count = asked.isWrite ? elements.count : driverReadCount(elements.area, elements.count);
    request.data = asked.data;
    return request;
}

QByteArray withoutNumber(const QByteArray& frame)
{
    return dialectOf(FrameFormat::ModbusTcp).withoutNumber(frame);
}

int remoteLong(const QByteArray& frame, int offset)
{
    const quint32 high = static_cast<quint32>(wordAt(frame, offset));
    return static_cast<int>(high << 16 | static_cast<quint32>(wordAt(frame, offset + 2)));
}

std::optional<RebuiltRequest> rebuildIn(int area, const QByteArray& frame)
{
    const auto asked = askedFor(frame);
    const auto elements = asked ? elementsIn(area, *asked) : std::nullopt;
    if (!elements)
        return std::nullopt;
    return RebuiltRequest{asked->isWrite, recordOf(*asked, *elements)};
}

class ModbusRebuilder : public RequestRebuilder
{
public:
    ModbusRebuilder(std::vector<Variable> variables, const std::vector<DriverBlock>& blocks);

    std::optional<RebuiltRequest> rebuild(const QByteArray& frame) const override;

private:
    std::vector<int> areasFor(const QByteArray& frame) const;

    std::vector<Variable> m_variables;
    std::map<QByteArray, RW_VAR> m_blocks; // by frame without the number
};

ModbusRebuilder::ModbusRebuilder(std::vector<Variable> variables, const std::vector<DriverBlock>& blocks)
    : m_variables(std::move(variables))
{
    for (const DriverBlock& block : blocks)
        m_blocks[withoutNumber(block.frame)] = block.request;
}

std::optional<RebuiltRequest> ModbusRebuilder::rebuild(const QByteArray& frame) const
{
    const auto block = m_blocks.find(withoutNumber(frame));
    if (block != m_blocks.end())
        return RebuiltRequest{false, block->second};
    for (const int area : areasFor(frame)) {
        const auto rebuilt = rebuildIn(area, frame);
        if (rebuilt)
            return rebuilt;
    }
    return std::nullopt;
}

/// \return the areas in which a frame may be meant, the likeliest first
std::vector<int> ModbusRebuilder::areasFor(const QByteArray& frame) const
{
    std::vector<int> areas;
    const auto asked = askedFor(frame);
    if (!asked)
        return areas;
    for (const Variable& variable : m_variables) {
        const Variable words = wordsOf(variable);
        const auto elements = serves(words.area, *asked) ? elementsIn(words.area, *asked) : std::nullopt;
        if (elements && overlaps(*elements, words))
            areas.push_back(words.area);
    }
    std::vector<int> others;
    for (int area = 0; area < areaCount(); ++area) {
        if (serves(area, *asked))
            others.push_back(area);
    }
    std::stable_sort(others.begin(), others.end(),
                     [&asked](int a, int b) { return offsetIn(a, *asked) < offsetIn(b, *asked); });
    areas.insert(areas.end(), others.begin(), others.end());
    return areas;
}

class RemoteRebuilder : public RequestRebuilder
{
public:
    std::optional<RebuiltRequest> rebuild(const QByteArray& frame) const override;
};

std::optional<RebuiltRequest> RemoteRebuilder::rebuild(const QByteArray& frame) const
{
    const int area = wordAt(frame, remoteAreaOffset);
    if (frame.size() < remoteReadSize || !isArea(area))
        return std::nullopt;
    RebuiltRequest rebuilt = {};
    rebuilt.isWrite = frame.size() > remoteReadSize;
    RW_VAR& request = rebuilt.request;
    request.hostKey = byteAt(frame, 1);
    request.accessFlag = byteAt(frame, 2);
    request.stationGroup = byteAt(frame, 3);
    request.station = byteAt(frame, remoteStationOffset);
    request.area = area;
    request.address = remoteLong(frame, remoteElementOffset);
    request.count = wordAt(frame, remoteCountOffset);
    request.storeSelector = remoteLong(frame, 13);
    request.spare13 = remoteLong(frame, 17);
    request.data = frame.mid(remoteValueOffset, frame.size() - remoteReadSize);
    return rebuilt;
}

} // namespace

std::unique_ptr<RequestRebuilder> requestRebuilderFor(FrameFormat format, std::vector<Variable> variables,
                                                      const std::vector<DriverBlock>& blocks)
{
    if (format == FrameFormat::Remote)
        return std::make_unique<RemoteRebuilder>();
    return std::make_unique<ModbusRebuilder>(std::move(variables), blocks);
}

} // namespace plc
