// SPDX-License-Identifier: MIT
#include "runtime/model/utf8.h"

#include <iterator>

namespace plc
{

namespace
{

/// Characters by their first byte: how long they are, and what the second byte may be.
struct CharacterRow {
    unsigned char first;
    unsigned char last;
    int bytes;
    unsigned char least;
    unsigned char greatest;
};

const CharacterRow characterRows[] = {
    {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

bool lies(unsigned char byte, unsigned char least, unsigned char greatest)
{
    return byte >= least && byte <= greatest;
}

/// \return the bytes of the character at the beginning of \a size \a bytes; 0 when there is none
int bytesOfCharacter(const unsigned char* bytes, int size)
{
    for (const CharacterRow& row : characterRows) {
        if (!lies(*bytes, row.first, row.last))
            continue;
        if (row.bytes > size || (row.bytes > 1 && !lies(bytes[1], row.least, row.greatest)))
            return 0;
        for (int at = 2; at < row.bytes; ++at) {
            if (!lies(bytes[at], 0x80, 0xBF))
                return 0;
        }
        return row.bytes;
    }
    return 0;
}

} // namespace

int firstNotUtf8(const QByteArray& bytes)
{
    for (int at = 0; at < bytes.size();) {
        const auto* const character = reinterpret_cast<const unsigned char*>(bytes.constData()) + at;
        const int size = bytesOfCharacter(character, bytes.size() - at);
        if (size == 0)
            return at;
        at += size;
    }
    return -1;
}

} // namespace plc
