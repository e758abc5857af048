// SPDX-License-Identifier: MIT
#include "runtime/modbus/remote_words.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"
#include "runtime/model/variable.h"

#include <QStringList>

namespace plc
{

namespace
{

bool isRead(const QByteArray& frame)
{
    return frame.size() == remoteReadSize;
}

int elementOf(const QByteArray& frame)
{
    const unsigned int high = static_cast<unsigned int>(wordAt(frame, remoteElementOffset));
    const unsigned int low = static_cast<unsigned int>(wordAt(frame, remoteElementOffset + 2));
    return static_cast<int>(high << 16 | low);
}

/// A read of double words asks for one more than it gets.
int elementsOf(const QByteArray& frame, int area)
{
    const int count = wordAt(frame, remoteCountOffset);
    return isRead(frame) && kindOf(area) == ElementKind::DoubleWord ? qMax(count - 1, 1) : count;
}

Variable variableOf(const QByteArray& frame)
{
    Variable variable;
    variable.area = wordAt(frame, remoteAreaOffset);
    variable.element = elementOf(frame);
    variable.count = elementsOf(frame, variable.area);
    return variable;
}

QString stationWords(int station)
{
    return station == broadcastStation ? QStringLiteral("all stations: ")
                                       : QStringLiteral("station %1: ").arg(station);
}

QString listed(const std::vector<quint32>& values)
{
    QStringList words;
    for (const quint32 value : values)
        words << QString::number(value);
    return words.join(QLatin1Char(' '));
}

std::vector<quint32> bitsOf(const QByteArray& data, int count)
{
    std::vector<quint32> bits;
    for (int bit = 0; bit < count && bit / 8 < data.size(); ++bit)
        bits.push_back(static_cast<quint32>(byteAt(data, bit / 8) >> (bit % 8) & 1));
    return bits;
}

std::vector<quint32> registersOf(const QByteArray& data, bool pairs)
{
    std::vector<quint32> values;
    const int step = pairs ? 4 : 2;
    for (int at = 0; at + step <= data.size(); at += step) {
        const quint32 low = static_cast<quint32>(wordAt(data, at));
        const quint32 high = pairs ? static_cast<quint32>(wordAt(data, at + 2)) : 0;
        values.push_back(high << 16 | low);
    }
    return values;
}

std::vector<quint32> valuesOfReply(const Variable& variable, const QByteArray& data)
{
    const ElementKind kind = kindOf(variable.area);
    return kind == ElementKind::Bit ? bitsOf(data, variable.count)
                                    : registersOf(data, kind == ElementKind::DoubleWord);
}

} // namespace

QString remoteRequestWords(const QByteArray& frame)
{
    const int area = wordAt(frame, remoteAreaOffset);
    if (frame.size() < remoteReadSize)
        return QStringLiteral("no whole request (%1 bytes)").arg(frame.size());
    const QString station = stationWords(byteAt(frame, remoteStationOffset));
    if (!isArea(area))
        return station + QStringLiteral("area %1").arg(area);
    const Variable variable = variableOf(frame);
    if (isRead(frame))
        return station + QStringLiteral("read ") + variableText(variable);
    const QByteArray data = frame.mid(remoteValueOffset, frame.size() - remoteReadSize);
    return station +
           QStringLiteral("write %1: %2").arg(variableText(variable), listed(valuesOfBytes(area, data)));
}

QString remoteReplyWords(const QByteArray& frame, const QByteArray& reply)
{
    if (reply.isEmpty())
        return QStringLiteral("no reply");
    if (reply.size() < remoteReplyDataOffset || frame.size() < remoteReadSize)
        return QStringLiteral("no whole reply (%1 bytes)").arg(reply.size());
    const QString station = stationWords(byteAt(reply, unitOffset));
    if (!isRead(frame))
        return station + QStringLiteral("written");
    if (!isArea(wordAt(frame, remoteAreaOffset)))
        return station + QStringLiteral("answer of an area that there is not");
    return station + listed(valuesOfReply(variableOf(frame), reply.mid(remoteReplyDataOffset)));
}

} // namespace plc
