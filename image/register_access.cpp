// SPDX-License-Identifier: MIT
#include "driver/communication_turn.h"
#include "driver/modbus_rtu_master.h"
#include "frames/address_map.h"
#include "frames/frame_bytes.h"
#include "image/element_run.h"
#include "image/extended_variables.h"
#include "image/image_write.h"
#include "varlist/add_variables.h"
#include "varlist/address_text.h"
#include "varlist/pieces.h"

#include <algorithm>

namespace
{

// SetRegisterData(): the request that every piece starts from.
RW_VAR WriteTemplate(const QString& name, int area, const QString& address, unsigned int station, int hostKey,
                     unsigned int hostSubKey)
{
    const COMINFO& info = *PLC_driver.comInfo;
    RW_VAR var = RW_VAR();
    var.hostKey = hostKey;
    var.hostSubKey = static_cast<int>(hostSubKey);
    var.accessFlag = 1;
    var.spare3 = info.remoteMode;
    var.stationGroup = info.localStation;
    var.name = name;
    var.name2 = address;
    var.area = area;
    var.station = info.multiStation != 0 ? static_cast<int>(station) : info.defaultStation;
    return var;
}

// The bytes from `from` on, filled up with zeros beyond the end of the value.
QByteArray Slice(const QByteArray& value, int from, int bytes)
{
    QByteArray slice = value.mid(from, bytes);
    PadTo(slice, bytes);
    return slice;
}

// How one area is cut into queued writes.
struct WriteCut {
    int elements;
    int limit; // most elements of one request
    int bytesPerElement;
};

WriteCut CutOf(const Area& area, int code, int count)
{
    const int limit = PLC_driver.comInfo->maxBlockCount;
    count = ServableCount(code, count, COUNT_OF_QUEUED_WRITE);
    switch (area.kind) {
    case Area::Bit:
    case Area::BitOfWord:
        return {count, 1, 1};
    case Area::Word:
        return {count, limit, 2};
    case Area::DoubleWord:
    default:
        return {(count + 1) / 2, limit, 4}; // the count is in 16-bit words here
    }
}

// Once a reply failed, each piece is mirrored at once: the builder, which mirrors it otherwise, does not do
// so after a failure. Neither lock is held when it returns. \return entries in the write list
int QueuePiece(RW_VAR& piece) PLC_EXCLUDES(PLC_driver.listMutex, PLC_driver.imageMutex)
{
    const int size = AddWrite(piece);
    if (PLC_driver.lastFailed != 0)
        WriteDataToLocal(&piece);
    return size;
}

// Queues the pieces of one write one by one, so that the communication thread waits for one at most. Without
// memory those queued before stay.
int QueueWrite(RW_VAR var, const Area& area, int start, const QByteArray& value, int count)
    PLC_EXCLUDES(PLC_driver.listMutex, PLC_driver.imageMutex)
{
    const WriteCut cut = CutOf(area, var.area, count);
    const Pieces pieces = CutIntoPieces(cut.elements, cut.limit);
    int size = 0;
    for (int i = 0; i < pieces.number; ++i) {
        if (i > 0)
            LetCommunicationPass();
        var.address = pieces.begin(start, i);
        var.count = pieces.count(i);
        var.data = Slice(value, i * pieces.size * cut.bytesPerElement, var.count * cut.bytesPerElement);
        size = QueuePiece(var);
    }
    return size;
}

// GetRegisterData(): elements that do not exist read as zero bytes, so the output has the size asked for.

void ReadDoubleWords(QByteArray& out, int address, int count) PLC_REQUIRES(PLC_driver.imageMutex)
{
    unsigned int* area = PLC_driver.image.dwordArea;
    if (count == 1) {
        if (ElementExists(address, 1, PLC_AREA_ELEMENTS))
            GetDWordFromUS(out, area, address, 1);
        return PadTo(out, 2);
    }
    const int elements = count < 2 ? 1 : count - 1;
    const ElementRun run = ExistingElements(address, elements, PLC_AREA_ELEMENTS);
    if (run.count > 0)
        GetDWordFromUS(out, area, run.start, run.count + 1);
    PadTo(out, 4 * elements);
}

void ReadImage(QByteArray& out, const Area& area, int address, int count) PLC_REQUIRES(PLC_driver.imageMutex)
{
    Image& image = PLC_driver.image;
    const bool bitsOfWords = area.kind == Area::BitOfWord;
    const ElementRun run = ExistingElements(address, count, bitsOfWords ? PLC_AREA8_BITS : PLC_AREA_ELEMENTS);
    switch (area.kind) {
    case Area::Bit:
        GetBitFromUC(out, image.bitArea[area.buffer], run.start, run.count);
        return PadTo(out, count);
    case Area::BitOfWord:
        GetBitFromUS(out, image.wordArea[area.buffer], run.start, run.count);
        return PadTo(out, count);
    case Area::Word:
        GetWordFromUS(out, image.wordArea[area.buffer], run.start, run.count);
        return PadTo(out, 2 * count);
    case Area::DoubleWord:
    default:
        return ReadDoubleWords(out, address, count);
    }
}

// The value of a station's element, made when it is new; an empty one where the element does not exist.
QByteArray StationValue(int station, int area, int address, int offset) PLC_REQUIRES(PLC_driver.imageMutex)
{
    if (!ElementExists(address, offset, PLC_AREA_ELEMENTS))
        return QByteArray();
    return PLC_driver.extendList.at(ExtendFindSameVar(station, area, address + offset)).value;
}

void AppendBytes(QByteArray& out, const QByteArray& value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.append(static_cast<char>(ByteAt(value, i)));
}

void ReadStationBits(QByteArray& out, int station, int area, int address, int count)
    PLC_REQUIRES(PLC_driver.imageMutex)
{
    for (int i = 0; i < count; ++i)
        out.append(static_cast<char>(ByteAt(StationValue(station, area, address, i), 0) & 1));
}

// One walk of the store for the bits inside one word. No address text names a bit before the first.
void ReadStationBitsOfWords(QByteArray& out, int station, int address, int count)
    PLC_REQUIRES(PLC_driver.imageMutex)
{
    const ElementRun run = ExistingElements(address, count, PLC_AREA8_BITS);
    QByteArray value;
    int word = -1;
    for (int i = 0; i < run.count; ++i) {
        const int bit = run.start + i;
        if (bit / PLC_WORD_BITS != word) {
            word = bit / PLC_WORD_BITS;
            value = StationValue(station, AREA_WORD, word, 0);
        }
        const int byte = (bit % PLC_WORD_BITS) / 8;
        out.append(static_cast<char>((ByteAt(value, byte) >> (bit % 8)) & 1));
    }
    PadTo(out, count);
}

void ReadStationElements(QByteArray& out, int station, int area, int address, int elements, int bytes)
    PLC_REQUIRES(PLC_driver.imageMutex)
{
    for (int i = 0; i < elements; ++i)
        AppendBytes(out, StationValue(station, area, address, i), bytes);
}

void ReadStation(QByteArray& out, const Area& area, int code, int station, int address, int count)
    PLC_REQUIRES(PLC_driver.imageMutex)
{
    switch (area.kind) {
    case Area::Bit:
        return ReadStationBits(out, station, code, address, count);
    case Area::BitOfWord:
        return ReadStationBitsOfWords(out, station, address, count);
    case Area::Word:
        return ReadStationElements(out, station, code, address, count, 2);
    case Area::DoubleWord:
    default: // a count of 1 is the low half of the element itself, unlike in the image
        return count == 1 ? ReadStationElements(out, station, code, address, 1, 2)
                          : ReadStationElements(out, station, code, address, count - 1, 4);
    }
}

} // namespace

int SetRegisterData(QString* name, int area, QString* address, unsigned int station, QByteArray* data,
                    int count, int hostKey, unsigned int hostSubKey)
try {
    if (!PLC_driver.comInfo || !name || !address || !data)
        return 0;
    const int start = StringAddressToInt(area, *address);
    if (start < 0)
        return 0;
    RW_VAR var = WriteTemplate(*name, area, *address, station, hostKey, hostSubKey);
    if (PLC_driver.comInfo->hostWriteMode != 2) {
        var.address = start;
        var.count = ServableCount(area, count, COUNT_OF_ELEMENTS);
        var.data = *data;
        WriteDataToLocal(&var);
        return 1;
    }
    const Area* row = FindArea(area);
    if (!row || !row->written) // area 0 is refused here, although it can be read
        return 0;
    return QueueWrite(var, *row, start, *data, count);
} catch (...) {
    return 0;
}

unsigned int GetRegisterData(int, int area, QString* address, int station, QByteArray* out, int count)
try {
    if (!PLC_driver.comInfo || !address || !out)
        return 0;
    const int start = StringAddressToInt(area, *address);
    if (start < 0)
        return 0;
    const Area* row = FindArea(area);
    count = ServableCount(area, std::max(count, 0), COUNT_OF_READ);
    QByteArray bytes;
    MutexHolder lock(PLC_driver.imageMutex);
    if (row && PLC_driver.comInfo->multiStation == 0)
        ReadImage(bytes, *row, start, count);
    else if (row)
        ReadStation(bytes, *row, area, station, start, count);
    out->swap(bytes);
    return 1;
} catch (...) {
    return 0;
}
