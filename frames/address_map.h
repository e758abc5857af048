// SPDX-License-Identifier: MIT
/// \file
/// \brief What the fifteen area codes mean: one row per code, read by every folder.
#ifndef FRAMES_ADDRESS_MAP_H
#define FRAMES_ADDRESS_MAP_H

/// Modbus function codes that the driver sends (Modbus Application Protocol V1.1b3, section 6); no others.
enum FunctionCode {
    FC_NONE = 0,
    FC_READ_COILS = 1,
    FC_READ_HOLDING_REGISTERS = 3,
    FC_WRITE_SINGLE_COIL = 5,
    FC_WRITE_SINGLE_REGISTER = 6,
    FC_WRITE_MULTIPLE_REGISTERS = 16
};

/// Area codes that the code names; the others only ever appear as rows.
enum { AREA_BIT_OF_WORD = 8, AREA_WORD = 9, AREA_DWORD = 14 };

/// One row of the table: everything that distinguishes one area code from another on the line, in address
/// texts and in the image. What concerns only the grouping of cyclic reads stands in varlist/read_list.cpp.
struct Area {
    /// Bit: one coil an element. BitOfWord: one bit of a register. Word: one register. DoubleWord: two.
    /// Every switch over it names all kinds (-Wswitch-enum); its `default` only says that there is no other.
    enum Kind { Bit, BitOfWord, Word, DoubleWord };

    unsigned short base; ///< Modbus address of element 0
    bool written;        ///< false: a write is refused or dropped
    Kind kind;           ///< decides scaling, blocks, and the element view of the image
    int buffer;          ///< index among the image's buffers of its kind
    int textBase;        ///< number base of the address text
    int textOrigin;      ///< what the text of element 0 says; a smaller text is refused (0: no check)
    FunctionCode read;   ///< FC_NONE: a read request is dropped
};

/// \return the row of an area code, null outside 0..14. Any thread.
const Area* FindArea(int area);

/// \return whether \a area is one of the bit areas 0..7
bool IsBitArea(int area);

/// \return the Modbus base address of an area, 0..0xFFFF; 0 for a code outside 0..14. Any thread.
unsigned int getPlcAdd(int area);

#endif
