// SPDX-License-Identifier: MIT
#include "runtime/modbus/identity.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/model/printable.h"

#include <QStringList>

#include <iterator>

namespace plc
{

namespace
{

const int deviceIdentification = 14; // the kind of request that function 43 has for it
const int basicObjects = 1;
const char* const basicNames[] = {"VendorName", "ProductCode", "MajorMinorRevision"};
const int mostRequests = 4; // in which the objects may be spread

// Of a reply to function 43, behind its kind and the kind of objects.
const int moreFollowsOffset = pduDataOffset + 3;
const int nextObjectOffset = pduDataOffset + 4;
const int objectCountOffset = pduDataOffset + 5;
const int objectsOffset = pduDataOffset + 6;

QByteArray request(int station, int function, const QByteArray& data)
{
    QByteArray frame(pduDataOffset, '\0');
    putWord(&frame, lengthOffset, pduDataOffset - headerToLength + data.size());
    frame[unitOffset] = static_cast<char>(station);
    frame[functionOffset] = static_cast<char>(function);
    return frame + data;
}

QByteArray identificationRequest(int station, int firstObject)
{
    const char data[] = {deviceIdentification, basicObjects, static_cast<char>(firstObject)};
    return request(station, ReadDeviceIdentification, QByteArray(data, sizeof data));
}

/// Bytes that are no ASCII may be anything, and a terminal is not shown them.
QString shownText(const QByteArray& bytes)
{
    QString text;
    for (const char byte : bytes)
        text += QLatin1Char(static_cast<unsigned char>(byte) < 0x80 ? byte : '\0');
    return printable(text).trimmed();
}

QString nameOf(int object)
{
    return object < static_cast<int>(std::size(basicNames)) ? QString::fromLatin1(basicNames[object])
                                                            : QStringLiteral("Object%1").arg(object);
}

/// Adds whole objects, as far as there are any.
void takeObjects(const QByteArray& reply, Identity* identity)
{
    int at = objectsOffset;
    for (int left = byteAt(reply, objectCountOffset); left > 0 && at + 2 <= reply.size(); --left) {
        const int size = byteAt(reply, at + 1);
        if (at + 2 + size > reply.size())
            return;
        identity->fields.emplace_back(nameOf(byteAt(reply, at)), shownText(reply.mid(at + 2, size)));
        at += 2 + size;
    }
}

bool isIdentification(const QByteArray& reply)
{
    return reply.size() >= objectsOffset && !isException(reply) &&
           byteAt(reply, pduDataOffset) == deviceIdentification;
}

Identity askDeviceIdentification(int station, const Ask& ask)
{
    Identity identity;
    int next = 0;
    for (int requests = 0; requests < mostRequests; ++requests) {
        const QByteArray reply = ask(identificationRequest(station, next));
        if (!isIdentification(reply))
            break;
        takeObjects(reply, &identity);
        const bool goesOn = byteAt(reply, moreFollowsOffset) != 0 && byteAt(reply, nextObjectOffset) > next;
        if (!goesOn)
            break;
        next = byteAt(reply, nextObjectOffset);
    }
    identity.function = identity.fields.empty() ? 0 : ReadDeviceIdentification;
    return identity;
}

/// Some servers pause behind a request that they do not know, and forget what comes meanwhile. So one silence is not
/// the last word.
QByteArray askTwice(const QByteArray& frame, const Ask& ask)
{
    const QByteArray reply = ask(frame);
    return reply.isEmpty() ? ask(frame) : reply;
}

/// What the bytes mean is each maker's own; many have a text among them.
Identity askServerId(int station, const Ask& ask)
{
    Identity identity;
    const QByteArray reply = askTwice(request(station, ReportServerId, QByteArray()), ask);
    const int size = byteAt(reply, byteCountOffset);
    if (isException(reply) || size == 0 || reply.size() < readDataOffset + size)
        return identity;
    const QByteArray bytes = reply.mid(readDataOffset, size);
    identity.function = ReportServerId;
    identity.fields.emplace_back(QStringLiteral("ServerId"), shownText(bytes));
    identity.fields.emplace_back(QStringLiteral("Bytes"), QString::fromLatin1(bytes.toHex(' ').toUpper()));
    return identity;
}

} // namespace

QString identityText(const Identity& identity)
{
    QStringList texts;
    for (const auto& field : identity.fields)
        texts << field.second;
    if (identity.function == ReportServerId) // the bytes say the same once more
        texts = texts.mid(0, 1);
    texts.removeAll(QString());
    return texts.isEmpty() ? QString()
                           : QStringLiteral("%1 (function %2)")
                                 .arg(texts.join(QStringLiteral(", ")))
                                 .arg(identity.function);
}

Identity askIdentity(int station, const Ask& ask)
{
    const Identity identity = askDeviceIdentification(station, ask);
    return identity.function != 0 ? identity : askServerId(station, ask);
}

} // namespace plc
