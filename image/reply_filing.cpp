// SPDX-License-Identifier: MIT
#include "image/reply_filing.h"

#include "frames/address_map.h"
#include "frames/frame_bytes.h"
#include "image/element_run.h"
#include "image/extended_variables.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace
{

// Two registers with the first one in the lower half: a double word, or two words of the image side by side.
quint32 PairAt(const unsigned char* registers)
{
    static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "the image has the low byte of a word first");
    const quint32 pair = qFromBigEndian<quint32>(registers); // the first one in its upper half
    return pair << 16 | pair >> 16;
}

// The data part of a reply: what its request announces, as far as the array really holds it.
struct DataBytes {
    const unsigned char* bytes;
    int size;

    unsigned int bit(int n) const { return (bytes[n / 8] >> (n % 8)) & 1u; }
    unsigned int word(int i) const { return Get16(bytes + 2 * i); }
    unsigned int doubleWord(int k) const { return PairAt(bytes + 4 * k); }
};

const Protocol& Request() PLC_REQUIRES(PLC_driver.communicationTurn)
{
    return PLC_driver.protocolList.at(0);
}

DataBytes DataOf(const QByteArray* reply, const Protocol& request)
{
    static const unsigned char nothing = 0;
    DataBytes data = {&nothing, 0};
    if (!reply || request.dataOffset < 0 || request.dataOffset >= reply->size())
        return data;
    data.bytes = reinterpret_cast<const unsigned char*>(reply->constData()) + request.dataOffset;
    data.size = std::max(0, std::min(request.dataLength, reply->size() - request.dataOffset));
    return data;
}

// Bits of a reply that are filed: one more than its count where the last byte has it, on purpose.
int BitsToFile(const DataBytes& data, int count)
{
    return static_cast<int>(std::min(8LL * data.size, count + 1LL));
}

void PatchQueuedWrite(unsigned int value) PLC_REQUIRES(PLC_driver.communicationTurn)
{
    if (PLC_driver.protocolList.size() < 2)
        return;
    QByteArray& frame = PLC_driver.protocolList[1].frame;
    if (frame.size() >= FRAME_VALUE_OFFSET + 2)
        Set16(frame.data() + FRAME_VALUE_OFFSET, static_cast<int>(value));
}

// The read-before-write step: the word with the pending bit in it, which the queued write then carries.
unsigned int MergePendingBit(unsigned int value) PLC_REQUIRES(PLC_driver.communicationTurn)
{
    const PendingBit pending = PLC_driver.pendingBit;
    if (pending.hasValue) {
        const unsigned int mask = 1u << (pending.address & 15);
        value = pending.on ? value | mask : value & ~mask;
    }
    PatchQueuedWrite(value);
    return value;
}

// Two at a time: this loop is what most of the time of a long read goes into.
void CopyRegisters(unsigned short* words, const unsigned char* registers, int count)
{
    for (; count >= 2; count -= 2) {
        const quint32 pair = PairAt(registers);
        std::memcpy(words, &pair, sizeof pair);
        words += 2;
        registers += sizeof pair;
    }
    if (count == 1)
        *words = static_cast<unsigned short>(Get16(registers));
}

// The bits of half a byte in a cell each, lowest first.
const bool halfBytes[16][4] = {
    {false, false, false, false}, {true, false, false, false}, {false, true, false, false},
    {true, true, false, false},   {false, false, true, false}, {true, false, true, false},
    {false, true, true, false},   {true, true, true, false},   {false, false, false, true},
    {true, false, false, true},   {false, true, false, true},  {true, true, false, true},
    {false, false, true, true},   {true, false, true, true},   {false, true, true, true},
    {true, true, true, true},
};

// Puts a byte's eight bits into eight cells.
void SpreadByte(unsigned char byte, bool* cells)
{
    std::memcpy(cells, halfBytes[byte & 0xF], 4);
    std::memcpy(cells + 4, halfBytes[byte >> 4], 4);
}

void SaveToImage(QByteArray* reply, const Area& area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn)
{
    Image& image = PLC_driver.image;
    switch (area.kind) {
    case Area::Bit:
        return SaveBitToUC(reply, image.bitArea[area.buffer]);
    case Area::BitOfWord:
        return SpecialRegisterSave(reply, image.wordArea[area.buffer]);
    case Area::Word:
        return SaveWordToUS(reply, image.wordArea[area.buffer]);
    case Area::DoubleWord:
    default:
        return SaveDWordToUS(reply, image.dwordArea);
    }
}

// The value of element `element` of the request's station, cleared and resized for new bytes.
char* StationValue(const Protocol& request, int element, int bytes) PLC_REQUIRES(PLC_driver.imageMutex)
{
    const int entry = ExtendFindSameVar(request.var.station, request.var.area, element);
    QByteArray& value = PLC_driver.extendList[entry].value;
    value.resize(bytes);
    return value.data();
}

void PutLittleEndian(char* bytes, unsigned int value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

// The position just past the last filed bit loses its value before the loop ends, on purpose.
void SaveStationBits(const DataBytes& data, const Protocol& request) PLC_REQUIRES(PLC_driver.imageMutex)
{
    const int bits = 8 * data.size;
    for (int n = 0; n < bits; ++n) {
        const bool past = n > request.var.count;
        if (ElementExists(request.var.address, n, PLC_AREA_ELEMENTS)) {
            char* value = StationValue(request, request.var.address + n, past ? 0 : 1);
            if (!past)
                *value = static_cast<char>(data.bit(n));
        }
        if (past)
            return;
    }
}

void SaveStationWords(const DataBytes& data, const Protocol& request) PLC_REQUIRES(PLC_driver.imageMutex)
{
    const ElementRun run = ExistingElements(request.var.address, data.size / 2, PLC_AREA_ELEMENTS);
    for (int i = 0; i < run.count; ++i)
        PutLittleEndian(StationValue(request, run.start + i, 2), data.word(run.skipped + i), 2);
}

void SaveStationDoubleWords(const DataBytes& data, const Protocol& request)
    PLC_REQUIRES(PLC_driver.imageMutex)
{
    const ElementRun run = ExistingElements(request.var.address, data.size / 4, PLC_AREA_ELEMENTS);
    for (int k = 0; k < run.count; ++k)
        PutLittleEndian(StationValue(request, run.start + k, 4), data.doubleWord(run.skipped + k), 4);
}

// Kept under area 8 and the word address, apart from the word's own entry in area 9; on purpose.
void SaveStationRegister(const DataBytes& data, const Protocol& request)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn)
{
    if (data.size < 2)
        return;
    unsigned int value = data.word(0);
    if (request.var.storeSelector == -1 && PLC_driver.pendingBit.queued)
        value = MergePendingBit(value);
    if (ElementExists(request.var.address, 0, PLC_AREA_ELEMENTS))
        PutLittleEndian(StationValue(request, request.var.address, 2), value, 2);
}

void SaveToStation(const DataBytes& data, const Protocol& request, const Area& area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn)
{
    switch (area.kind) {
    case Area::Bit:
        return SaveStationBits(data, request);
    case Area::BitOfWord:
        return SaveStationRegister(data, request);
    case Area::Word:
        return SaveStationWords(data, request);
    case Area::DoubleWord:
    default:
        return SaveStationDoubleWords(data, request);
    }
}

} // namespace

bool LacksWordForWrite(const QByteArray* reply)
{
    const Protocol& request = Request();
    const bool readBeforeWrite = request.var.area == AREA_BIT_OF_WORD && request.var.storeSelector == -1;
    return readBeforeWrite && PLC_driver.protocolList.size() > 1 && DataOf(reply, request).size < 2;
}

void SaveToLocalDataErea(QByteArray* reply)
{
    const Protocol& request = Request();
    const Area* area = FindArea(request.var.area);
    if (!area)
        return;
    if (PLC_driver.comInfo->multiStation == 0)
        SaveToImage(reply, *area);
    else
        SaveToStation(DataOf(reply, request), request, *area);
}

void SaveBitToUC(QByteArray* reply, bool* area)
{
    const Protocol& request = Request();
    const DataBytes data = DataOf(reply, request);
    const int bits = BitsToFile(data, request.var.count);
    const ElementRun run = ExistingElements(request.var.address, bits, PLC_AREA_ELEMENTS);
    bool* const cells = area + run.start;
    const int wholeBytes = run.skipped == 0 ? run.count / 8 : 0;
    for (int byte = 0; byte < wholeBytes; ++byte)
        SpreadByte(data.bytes[byte], cells + 8 * byte);
    for (int i = 8 * wholeBytes; i < run.count; ++i)
        cells[i] = data.bit(run.skipped + i) != 0;
}

void SaveWordToUS(QByteArray* reply, unsigned short* area)
{
    const Protocol& request = Request();
    const DataBytes data = DataOf(reply, request);
    const ElementRun run = ExistingElements(request.var.address, data.size / 2, PLC_AREA_ELEMENTS);
    CopyRegisters(area + run.start, data.bytes + 2 * run.skipped, run.count);
}

void SaveDWordToUS(QByteArray* reply, unsigned int* area)
{
    const Protocol& request = Request();
    const DataBytes data = DataOf(reply, request);
    const ElementRun run = ExistingElements(request.var.address, data.size / 4, PLC_AREA_ELEMENTS);
    for (int k = 0; k < run.count; ++k)
        area[run.start + k] = data.doubleWord(run.skipped + k);
}

void SpecialRegisterSave(QByteArray* reply, unsigned short* area)
{
    const Protocol& request = Request();
    const DataBytes data = DataOf(reply, request);
    if (data.size < 2)
        return;
    unsigned int value = data.word(0);
    if (request.var.storeSelector == -1)
        value = MergePendingBit(value);
    if (ElementExists(request.var.address, 0, PLC_AREA_ELEMENTS))
        area[request.var.address] = static_cast<unsigned short>(value);
}
