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
    {ElementKind::Bit, 0xF800, 8, 0, false, BitCut::LikeBlocks, octalDigits, "bits, read only", "octal",
     "0:17"},
    {ElementKind::Bit, 0xFC00, 8, 0, true, BitCut::LikeBlocks, octalDigits, "bits", "octal", "1:17"},
    {ElementKind::Bit, 0x0000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal", "2:100"},
    {ElementKind::Bit, 0x2400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal", "3:100"},
    {ElementKind::Bit, 0xE000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal", "4:100"},
    {ElementKind::Bit, 0xF000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal", "5:100"},
    {ElementKind::Bit, 0xF400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, "bits", "decimal", "6:100"},
    {ElementKind::Bit, 0x1F40, 10, 8000, true, BitCut::LikeWords, "a decimal number from 8000 on", "bits",
     "decimal from 8000 on", "7:8100"},
    {ElementKind::BitInWord, 0x0000, 10, 0, true, BitCut::LikeBlocks, "word.bit, e.g. 10.3",
     "bits in the words of area 9", "word.bit, both decimal", "8:10.3"},
    {ElementKind::Word, 0x0000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal",
     "9:100"},
    {ElementKind::Word, 0x3000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal",
     "10:100"},
    {ElementKind::Word, 0x2400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal",
     "11:100"},
    {ElementKind::Word, 0xF000, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal",
     "12:100"},
    {ElementKind::Word, 0xF400, 10, 0, true, BitCut::LikeBlocks, decimalDigits, wholeWords, "decimal",
     "13:100"},
    {ElementKind::DoubleWord, 0xF700, 10, 200, true, BitCut::LikeBlocks, "a decimal number from 200 on",
     "double words (32 bits)", "decimal from 200 on", "14:200"},
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
