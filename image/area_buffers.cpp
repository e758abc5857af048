// SPDX-License-Identifier: MIT
#include "image/area_buffers.h"

#include "frames/frame_bytes.h"

namespace
{

// The first bytes of an array that holds at least that many; new ones are for the caller to set.
char* AtLeast(QByteArray& out, int bytes)
{
    if (out.size() < bytes)
        out.resize(bytes);
    return out.data();
}

void PutWord(char* bytes, unsigned int word)
{
    bytes[0] = static_cast<char>(word & 0xFF);
    bytes[1] = static_cast<char>((word >> 8) & 0xFF);
}

unsigned int WordAt(const QByteArray& data, int at)
{
    return ByteAt(data, at) | static_cast<unsigned int>(ByteAt(data, at + 1)) << 8;
}

void PutBit(unsigned short& word, int bit, bool on)
{
    const int mask = 1 << bit;
    word = static_cast<unsigned short>(on ? word | mask : word & ~mask);
}

} // namespace

void GetBitFromUC(QByteArray& out, bool* area, int start, int count)
{
    if (count < 1)
        return;
    out.reserve(out.size() + count);
    for (int i = 0; i < count; ++i)
        out.append(static_cast<char>(area[start + i] ? 1 : 0));
}

void GetBitFromUS(QByteArray& out, unsigned short* area, int start, int count)
{
    if (count < 1)
        return;
    char* bytes = AtLeast(out, count);
    for (int i = 0; i < count; ++i)
        bytes[i] = static_cast<char>((area[(start + i) / 16] >> ((start + i) % 16)) & 1);
}

void GetWordFromUS(QByteArray& out, unsigned short* area, int start, int count)
{
    if (count < 1)
        return;
    char* bytes = AtLeast(out, 2 * count);
    for (int i = 0; i < count; ++i)
        PutWord(bytes + 2 * i, area[start + i]);
}

void GetDWordFromUS(QByteArray& out, unsigned int* area, int start, int count)
{
    if (count == 1) { // the low half of the element after start, on purpose
        PutWord(AtLeast(out, 2), area[start + 1]);
        return;
    }
    const int elements = count < 2 ? 1 : count - 1;
    out.reserve(out.size() + 4 * elements);
    for (int k = 0; k < elements; ++k) {
        char bytes[4];
        PutWord(bytes, area[start + k]);
        PutWord(bytes + 2, area[start + k] >> 16);
        out.append(bytes, 4);
    }
}

void SetBitToUC(int start, bool* area, QByteArray* data, int count)
{
    for (int i = 0; i < count && i <= data->size(); ++i)
        area[start + i] = (ByteAt(*data, i) & 1) != 0;
}

void SetBitToUS(int start, unsigned short* area, QByteArray* data, int count)
{
    for (int i = 0; i < count && i < data->size(); ++i) {
        const int bit = start + i;
        PutBit(area[bit / 16], bit % 16, ByteAt(*data, i) == 1);
    }
}

void SetWordToUS(int start, unsigned short* area, QByteArray* data, int count)
{
    for (int i = 0; i < count && i <= data->size() / 2; ++i)
        area[start + i] = static_cast<unsigned short>(WordAt(*data, 2 * i));
}

void SetDWordToUS(int start, unsigned int* area, QByteArray* data, int count)
{
    for (int k = 0; k < count && k <= data->size() / 4; ++k)
        area[start + k] = WordAt(*data, 4 * k) | WordAt(*data, 4 * k + 2) << 16;
}

void SetWordToUI(int start, unsigned short* area, QByteArray* data, int count)
{
    for (int k = 0; k < count / 2 && k < data->size() / 4; ++k) {
        area[start + 2 * k + 1] = static_cast<unsigned short>(WordAt(*data, 4 * k));
        area[start + 2 * k] = static_cast<unsigned short>(WordAt(*data, 4 * k + 2));
    }
}
