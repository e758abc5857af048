// SPDX-License-Identifier: MIT
#include "panel/where/place.h"

#include "runtime/modbus/protocol.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/modbus_address.h"

#include <algorithm>

namespace plc
{

namespace
{

int writeFunctionOf(const Variable& piece)
{
    switch (kindOf(piece.area)) {
    case ElementKind::Word:
        return piece.count == 1 ? WriteRegister : WriteRegisters;
    case ElementKind::DoubleWord:
        return WriteRegisters;
    default:
        return WriteCoil;
    }
}

std::vector<int> writeFunctions(const Variable& elements)
{
    const bool isBroadcast = elements.station == broadcastStation;
    if (!areaOf(elements.area).isWritable || (elements.area == bitInWordArea && isBroadcast))
        return {};
    if (elements.area == bitInWordArea)
        return {ReadRegisters, WriteRegister};
    std::vector<int> functions;
    for (const Variable& piece : writePieces(elements, largestBlockCount)) {
        const int function = writeFunctionOf(piece);
        if (std::find(functions.begin(), functions.end(), function) == functions.end())
            functions.push_back(function);
    }
    return functions;
}

QString spanText(const QString& first, const QString& last)
{
    return first == last ? first : first + QLatin1Char('-') + last;
}

QString hexText(int address)
{
    return QStringLiteral("0x") + QString::number(address, 16).toUpper().rightJustified(4, QLatin1Char('0'));
}

} // namespace

Place placeOf(const Variable& elements)
{
    Place place;
    const int lastElement = endOf(elements) - 1;
    place.inCoils = liesInCoils(elements.area);
    place.first = modbusAddress(elements.area, elements.element);
    place.last = modbusAddress(elements.area, lastElement) + placesOfElement(elements.area) - 1;
    if (kindOf(elements.area) == ElementKind::BitInWord) {
        place.firstBit = elements.element % bitsOfWord;
        place.lastBit = lastElement % bitsOfWord;
    }
    if (elements.station != broadcastStation)
        place.readFunctions = {place.inCoils ? ReadCoils : ReadRegisters};
    place.writeFunctions = writeFunctions(elements);
    return place;
}

QString placeText(const Place& place)
{
    const QLatin1String kind(place.inCoils ? "coil" : "register");
    return place.first == place.last ? QStringLiteral("%1 %2").arg(kind).arg(place.first)
                                     : QStringLiteral("%1s %2-%3").arg(kind).arg(place.first).arg(place.last);
}

QString hexAddressText(const Place& place)
{
    return spanText(hexText(place.first), hexText(place.last));
}

QString traditionalText(const Place& place)
{
    const int digits = place.last < 9999 ? 4 : 5;
    const auto text = [&place, digits](int address) {
        return QLatin1Char(place.inCoils ? '0' : '4') +
               QString::number(address + 1).rightJustified(digits, QLatin1Char('0'));
    };
    return spanText(text(place.first), text(place.last));
}

QString functionName(int function)
{
    switch (function) {
    case ReadCoils:
        return QStringLiteral("read coils");
    case ReadRegisters:
        return QStringLiteral("read holding registers");
    case WriteCoil:
        return QStringLiteral("write single coil");
    case WriteRegister:
        return QStringLiteral("write single register");
    case WriteRegisters:
        return QStringLiteral("write multiple registers");
    default:
        return QString();
    }
}

} // namespace plc
