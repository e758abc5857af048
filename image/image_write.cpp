// SPDX-License-Identifier: MIT
#include "image/image_write.h"

#include "frames/address_map.h"
#include "frames/frame_bytes.h"
#include "image/element_run.h"
#include "image/extended_variables.h"

#include <algorithm>

namespace
{

// Elements that the value bytes reach: the one that begins right at their end counts too, as zero.
int ElementsInReach(const RW_VAR& var, int bytesPerElement)
{
    return std::min(var.count, var.data.size() / bytesPerElement + 1);
}

// The value bytes of a run, copied to rest only where the run does not begin with the first of them.
QByteArray* BytesOf(RW_VAR& var, const ElementRun& run, int bytesPerElement, QByteArray& rest)
{
    if (run.skipped == 0)
        return &var.data;
    rest = var.data.mid(run.skipped * bytesPerElement);
    return &rest;
}

void MirrorBits(RW_VAR& var, bool* area)
{
    QByteArray rest;
    const ElementRun run = ExistingElements(var.address, ElementsInReach(var, 1), PLC_AREA_ELEMENTS);
    SetBitToUC(run.start, area, BytesOf(var, run, 1, rest), run.count);
}

void MirrorBitsOfWords(RW_VAR& var, unsigned short* area)
{
    QByteArray rest;
    const int reach = std::min(var.count, var.data.size());
    const ElementRun run = ExistingElements(var.address, reach, PLC_AREA8_BITS);
    SetBitToUS(run.start, area, BytesOf(var, run, 1, rest), run.count);
}

void MirrorWords(RW_VAR& var, unsigned short* area)
{
    QByteArray rest;
    const ElementRun run = ExistingElements(var.address, ElementsInReach(var, 2), PLC_AREA_ELEMENTS);
    SetWordToUS(run.start, area, BytesOf(var, run, 2, rest), run.count);
}

void MirrorDoubleWords(RW_VAR& var, unsigned int* area)
{
    QByteArray rest;
    const ElementRun run = ExistingElements(var.address, ElementsInReach(var, 4), PLC_AREA_ELEMENTS);
    SetDWordToUS(run.start, area, BytesOf(var, run, 4, rest), run.count);
}

void MirrorIntoImage(RW_VAR& var, const Area& area) PLC_REQUIRES(PLC_driver.imageMutex)
{
    Image& image = PLC_driver.image;
    switch (area.kind) {
    case Area::Bit:
        return MirrorBits(var, image.bitArea[area.buffer]);
    case Area::BitOfWord:
        return MirrorBitsOfWords(var, image.wordArea[area.buffer]);
    case Area::Word:
        return MirrorWords(var, image.wordArea[area.buffer]);
    case Area::DoubleWord:
    default:
        return MirrorDoubleWords(var, image.dwordArea);
    }
}

// One entry per element, each replaced by bytesPerElement value bytes.
void MirrorElementsOfStation(const RW_VAR& var, int bytesPerElement) PLC_REQUIRES(PLC_driver.imageMutex)
{
    const ElementRun run =
        ExistingElements(var.address, ElementsInReach(var, bytesPerElement), PLC_AREA_ELEMENTS);
    for (int i = 0; i < run.count; ++i) {
        const int at = (run.skipped + i) * bytesPerElement;
        QByteArray value(bytesPerElement, '\0');
        for (int byte = 0; byte < bytesPerElement; ++byte)
            value[byte] = static_cast<char>(ByteAt(var.data, at + byte));
        if (bytesPerElement == 1)
            value[0] = static_cast<char>(value.at(0) & 1);
        const int entry = ExtendFindSameVar(var.station, var.area, run.start + i);
        PLC_driver.extendList[entry].value = value;
    }
}

// The bit of one word: only 1 and 0 are values.
void PutStationBit(QByteArray& value, int byte, int mask, unsigned char bit)
{
    if (value.size() <= 1 || bit > 1)
        return;
    value[byte] = static_cast<char>(bit == 1 ? value.at(byte) | mask : value.at(byte) & ~mask);
}

// The bit position comes from the first bit address and stays the same for every element, while the word
// moves on with the address; on purpose.
void MirrorBitsOfWordsOfStation(const RW_VAR& var) PLC_REQUIRES(PLC_driver.imageMutex)
{
    const int byte = (var.address & 15) / 8;
    const int mask = 1 << (var.address & 7);
    const ElementRun run = ExistingElements(var.address, var.count, PLC_AREA8_BITS);
    int word = -1;
    int entry = -1;
    for (int i = 0; i < run.count; ++i) {
        if ((run.start + i) / PLC_WORD_BITS != word) {
            word = (run.start + i) / PLC_WORD_BITS;
            entry = ExtendFindSameVar(var.station, AREA_WORD, word);
        }
        const int at = run.skipped + i;
        if (at < var.data.size())
            PutStationBit(PLC_driver.extendList[entry].value, byte, mask, ByteAt(var.data, at));
    }
}

void MirrorIntoStation(const RW_VAR& var, const Area& area) PLC_REQUIRES(PLC_driver.imageMutex)
{
    switch (area.kind) {
    case Area::Bit:
        return MirrorElementsOfStation(var, 1);
    case Area::BitOfWord:
        return MirrorBitsOfWordsOfStation(var);
    case Area::Word:
        return MirrorElementsOfStation(var, 2);
    case Area::DoubleWord:
    default:
        return MirrorElementsOfStation(var, 4);
    }
}

} // namespace

void WriteDataToLocal(RW_VAR* var)
{
    MutexHolder lock(PLC_driver.imageMutex);
    const Area* area = FindArea(var->area);
    if (!area || !area->written) // area 0 keeps its cells until the next read, on purpose
        return;
    if (PLC_driver.comInfo->multiStation == 0)
        MirrorIntoImage(*var, *area);
    else
        MirrorIntoStation(*var, *area);
}
