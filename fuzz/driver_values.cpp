// SPDX-License-Identifier: MIT
#include "fuzz/driver_values.h"

#include "fuzz/checked_driver.h"

namespace fuzz
{

namespace
{

// How a reply begins; any other byte makes it any bytes.
const int goodReply = 0;
const int noReply = 1;

const int longestReply = 1 << 18; // a few awaited lengths are beyond any network

// Bytes of a reply whose values are kept per station: each element costs a walk. The announced length may be
// more; it alone is judged.
const int longestPerStation = 600;

// The bytes repeated to the length that the frame waits for.
QByteArray repeated(const QByteArray& bytes, int length)
{
    QByteArray reply;
    reply.reserve(length);
    while (reply.size() < length)
        reply += bytes.isEmpty() ? QByteArray(length, '\0') : bytes.left(length - reply.size());
    return reply;
}

const int mostAtOnce = 300;
const int mostWhereDear = 3000;

} // namespace

int CountLimit::cut(int count, bool dear)
{
    if (count <= mostAtOnce)
        return count;
    if (m_large == 0)
        return count % mostAtOnce;
    --m_large;
    return dear ? count % mostWhereDear : count;
}

QByteArray takeData(ByteSource& source, bool longData)
{
    const int size = longData ? source.word() % 2048 : source.byte();
    QByteArray data;
    for (const std::uint8_t byte : source.bytes(static_cast<std::size_t>(size)))
        data.append(static_cast<char>(byte));
    return data;
}

QString takeText(ByteSource& source)
{
    return QString::fromUtf8(takeData(source, false));
}

RW_VAR takeRecord(ByteSource& source, const COMINFO& settings)
{
    const int parts = source.byte();
    RW_VAR var = RW_VAR();
    var.area = source.number();
    var.address = source.number();
    var.count = source.number();
    var.station = source.number();
    var.stationGroup = settings.localStation;
    if (parts & WithKeys) {
        var.hostKey = source.number();
        var.hostSubKey = source.number();
    }
    if (parts & WithGroup)
        var.stationGroup = source.number();
    if (parts & WithAccessFlag)
        var.accessFlag = source.number();
    if (parts & WithSelector) {
        var.storeSelector = source.number();
        var.spare13 = source.number();
    }
    if (parts & (WithData | WithLongData))
        var.data = takeData(source, (parts & WithLongData) != 0);
    if (parts & WithText)
        var.name2 = takeText(source);
    return var;
}

HOST_VAR takeHostVariable(ByteSource& source, CountLimit& counts)
{
    HOST_VAR variable = HOST_VAR();
    variable.area = static_cast<unsigned char>(source.byte());
    variable.station = static_cast<unsigned char>(source.byte());
    variable.count = counts.cut(source.number(), true);
    variable.address = takeText(source);
    return variable;
}

void takeSetting(ByteSource& source, COMINFO& settings)
{
    const int word = source.below(static_cast<int>(settingsWords.size()));
    settings.*settingsWords[static_cast<std::size_t>(word)] = source.number();
}

void takeReply(ByteSource& source, CheckedDriver& driver)
{
    const int kind = source.byte();
    if (kind == noReply)
        return driver.reply(nullptr, 0);
    const int expected = PLC_driver.protocolList.isEmpty() ? 0 : PLC_driver.protocolList.at(0).replyLength;
    QByteArray bytes = takeData(source, false);
    if (kind == goodReply && expected >= 0 && expected <= longestReply) {
        const bool multi = driver.settings().multiStation != 0;
        bytes = repeated(bytes, multi ? std::min(expected, longestPerStation) : expected);
        return driver.reply(&bytes, expected);
    }
    // Announced and real length may differ: the first alone is judged, the second limits what is filed.
    const int announced = source.flag() ? expected : source.number();
    driver.reply(&bytes, announced);
}

COMINFO takeSettings(ByteSource& source)
{
    COMINFO settings = COMINFO();
    settings.maxBlockCount = 100;
    settings.defaultStation = 1;
    settings.retryLimit = 3;
    settings.localStation = 3;
    settings.hostWriteMode = 2;
    settings.portId = 7;
    for (int changes = source.below(8); changes > 0; --changes)
        takeSetting(source, settings);
    return settings;
}

} // namespace fuzz
