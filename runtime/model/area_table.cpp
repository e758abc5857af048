// SPDX-License-Identifier: MIT
#include "runtime/model/area_table.h"

#include "driver/plcdriver.h"

#include <iterator>

namespace plc
{

namespace
{

const char octalDigits[] = "octal digits, e.g. 17";
const char decimalDigits[] = "a decimal number";
const char wholeWords[] = "words (16 bits)";

// Row = area code.
const Area areas[PLC_AREA_COUNT] = {
    // kind                base    text      writable cut                 expected      for the help
    {ElementKind::Bit, 0xF800, 8, 0, false, BitCut::LikeBlocks, octalDigits, "bits, read only", "octal"},
    {ElementKind::Bit, 0xFC00, 8, 0, true, BitCut::LikeBlocks, octalDigits, "bits", "octal"},
    {ElementKind::Bit, 0x0000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal"},
    {ElementKind::Bit, 0x2400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal"},
    {ElementKind::Bit, 0xE000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal"},
    {ElementKind::Bit, 0xF000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal"},
    {ElementKind::Bit, 0xF400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal"},
    {ElementKind::Bit, 0x1F40, 10, 8000, true, BitCut::LikeWords, "a decimal number from 8000 on", "bits",
     "decimal"},
    {ElementKind::BitInWord, 0x0000, 10, 0, true, BitCut::LikeBlocks, "word.bit, e.g. 10.3",
     "bits in the words of area 9", "word.bit"},
    {ElementKind::Word, 0x0000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal"},
    {ElementKind::Word, 0x3000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal"},
    {ElementKind::Word, 0x2400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal"},
    {ElementKind::Word, 0xF000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal"},
    {ElementKind::Word, 0xF400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal"},
    {ElementKind::DoubleWord, 0xF700, 10, 200, true, BitCut::LikeBlocks, "a decimal number from 200 on",
     "double words (32 bits)", "decimal"},
};

struct Kind {
    int bytes;  // of one element's value
    int places; // that it takes in the controller
    int elements;
};

const Kind& sizesOf(int area)
{
    // Row = ElementKind.
    static const Kind kinds[] = {
        {1, 1, PLC_AREA_ELEMENTS},
        {1, 1, PLC_AREA8_BITS},
        {2, 1, PLC_AREA_ELEMENTS},
        {4, 2, PLC_AREA_ELEMENTS},
    };
    return kinds[static_cast<int>(kindOf(area))];
}

} // namespace

int areaCount()
{
    return static_cast<int>(std::size(areas));
}

bool isArea(int code)
{
    return code >= 0 && code < areaCount();
}

const Area& areaOf(int code)
{
    return areas[code];
}

ElementKind kindOf(int area)
{
    return areaOf(area).kind;
}

int bytesOfElement(int area)
{
    return sizesOf(area).bytes;
}

int placesOfElement(int area)
{
    return sizesOf(area).places;
}

int areaSize(int area)
{
    return sizesOf(area).elements;
}

} // namespace plc
