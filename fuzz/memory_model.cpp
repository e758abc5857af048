// SPDX-License-Identifier: MIT
#include "fuzz/memory_model.h"

#include "fuzz/check.h"
#include "fuzz/driver_areas.h"

#include <algorithm>
#include <cstring>

namespace fuzz
{

namespace
{

bool isThere(long long element)
{
    return element >= 0 && element < elementsOfArea;
}

bool isBitThere(long long bit)
{
    return bit >= 0 && bit < bitsOfWords;
}

int bytesOf(int area)
{
    if (isBitArea(area) || area == bitOfWordArea)
        return 1;
    return area == doubleWordArea ? 4 : 2;
}

// Which word area holds the words of a code; codes 8 and 9 share the first.
int bufferOf(int area)
{
    const int buffers[] = {0, 0, 4, 1, 2, 3}; // codes 8 to 13
    return buffers[area - bitOfWordArea];
}

int byteOf(const QByteArray& bytes, int at)
{
    return at < bytes.size() ? static_cast<unsigned char>(bytes.at(at)) : 0;
}

QByteArray littleEndian(unsigned int value, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes.append(static_cast<char>((value >> (8 * i)) & 0xFF));
    return bytes;
}

unsigned int valueOf(const QByteArray& littleEndianBytes)
{
    unsigned int value = 0;
    for (int i = littleEndianBytes.size() - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned int>(byteOf(littleEndianBytes, i));
    return value;
}

unsigned int registerAt(const QByteArray& data, int at)
{
    return static_cast<unsigned int>(byteOf(data, at) << 8 | byteOf(data, at + 1));
}

// The elements that a write with few value bytes reaches: the one that begins at their end is stored as 0.
int reached(const RW_VAR& var, int bytes)
{
    return std::min(var.count, var.data.size() / bytes + 1);
}

} // namespace

unsigned int mergedWord(unsigned int word, const QueuedBit& bit)
{
    const unsigned int mask = 1u << (bit.address & 15);
    if (!bit.hasValue)
        return word;
    return bit.on ? word | mask : word & ~mask;
}

QByteArray dataOf(const Protocol& request, const QByteArray* reply)
{
    if (!reply || request.dataOffset < 0 || request.dataLength <= 0)
        return QByteArray();
    return reply->mid(request.dataOffset, request.dataLength);
}

MemoryModel::MemoryModel()
{
    static Image image;
    m_image = &image;
    std::memset(m_image, 0, sizeof *m_image);
}

QByteArray* MemoryModel::entry(int station, int area, long long address)
{
    const Key key(station, area, static_cast<int>(address));
    const auto place = m_index.emplace(key, m_order.size());
    if (place.second) {
        m_order.push_back(key);
        m_values.push_back(QByteArray(4, '\0'));
    }
    return &m_values[place.first->second];
}

void MemoryModel::file(const Protocol& request, const QByteArray* reply, const QueuedBit& bit)
{
    const QByteArray data = dataOf(request, reply);
    const int area = request.var.area;
    if (!isKnownArea(area))
        return;
    if (isBitArea(area))
        fileBits(request, data);
    else if (area == bitOfWordArea)
        fileRegister(request, data, bit);
    else
        fileElements(request, data, bytesOf(area));
}

// One bit more than the count is filed where the last byte has it; per station the one after that loses its
// value.
void MemoryModel::fileBits(const Protocol& request, const QByteArray& data)
{
    const RW_VAR& var = request.var;
    const long long last = std::min<long long>(var.count, 8LL * data.size() - 1);
    for (int n = 0; n <= last; ++n) {
        const int bit = byteOf(data, n / 8) >> (n % 8) & 1;
        store(var.station, var.area, static_cast<long long>(var.address) + n,
              QByteArray(1, static_cast<char>(bit)));
    }
    const long long past = std::max(-1LL, last) + 1;
    if (m_multi && past < 8LL * data.size() && isThere(var.address + past))
        entry(var.station, var.area, var.address + past)->clear();
}

void MemoryModel::fileRegister(const Protocol& request, const QByteArray& data, const QueuedBit& bit)
{
    if (data.size() < 2)
        return;
    unsigned int word = registerAt(data, 0);
    if (request.var.storeSelector == -1 && (bit.queued || !m_multi))
        word = mergedWord(word, bit);
    const int area = m_multi ? bitOfWordArea : wordArea;
    store(request.var.station, area, request.var.address, littleEndian(word, 2));
}

void MemoryModel::fileElements(const Protocol& request, const QByteArray& data, int bytes)
{
    for (int i = 0; i < data.size() / bytes; ++i) {
        unsigned int value = registerAt(data, i * bytes);
        if (bytes == 4)
            value |= registerAt(data, i * bytes + 2) << 16;
        store(request.var.station, request.var.area, static_cast<long long>(request.var.address) + i,
              littleEndian(value, bytes));
    }
}

void MemoryModel::mirror(const RW_VAR& var)
{
    if (var.area == 0 || !isKnownArea(var.area))
        return;
    if (var.area == bitOfWordArea)
        return mirrorBitsOfWords(var);
    const int bytes = bytesOf(var.area);
    for (int i = 0; i < reached(var, bytes); ++i) {
        QByteArray value = var.data.mid(i * bytes, bytes).leftJustified(bytes, '\0');
        if (bytes == 1)
            value[0] = static_cast<char>(value.at(0) & 1);
        store(var.station, var.area, static_cast<long long>(var.address) + i, value);
    }
}

// Per station the bit position stays that of the first address, and only 0 and 1 are values.
void MemoryModel::mirrorBitsOfWords(const RW_VAR& var)
{
    for (int i = 0; i < var.count && (m_multi || i < var.data.size()); ++i) {
        const long long bit = static_cast<long long>(var.address) + i;
        if (!isBitThere(bit))
            continue;
        const long long word = bit / bitsOfWord;
        const int given = byteOf(var.data, i);
        if (m_multi) {
            QByteArray& value = *entry(var.station, wordArea, word);
            if (value.size() > 1 && i < var.data.size() && given <= 1)
                value = littleEndian(mergedWord(valueOf(value), {true, true, given == 1, var.address}),
                                     value.size());
            continue;
        }
        const QueuedBit one = {true, true, given == 1, static_cast<int>(bit)};
        store(0, wordArea, word, littleEndian(mergedWord(valueOf(loadFromImage(wordArea, word)), one), 2));
    }
}

void MemoryModel::store(int station, int area, long long element, const QByteArray& value)
{
    if (!isThere(element))
        return;
    if (m_multi)
        *entry(station, area, element) = value;
    else
        storeInImage(area, element, value);
}

void MemoryModel::storeInImage(int area, long long element, const QByteArray& value)
{
    const auto at = static_cast<std::size_t>(element);
    if (isBitArea(area))
        m_image->bitArea[area][at] = valueOf(value) != 0;
    else if (area == doubleWordArea)
        m_image->dwordArea[at] = valueOf(value);
    else
        m_image->wordArea[bufferOf(area)][at] = static_cast<unsigned short>(valueOf(value));
}

QByteArray MemoryModel::loadFromImage(int area, long long element) const
{
    const int bytes = area == bitOfWordArea ? 2 : bytesOf(area);
    if (!isThere(element))
        return QByteArray(bytes, '\0');
    const auto at = static_cast<std::size_t>(element);
    if (isBitArea(area))
        return littleEndian(m_image->bitArea[area][at], bytes);
    if (area == doubleWordArea)
        return littleEndian(m_image->dwordArea[at], bytes);
    return littleEndian(m_image->wordArea[bufferOf(area)][at], bytes);
}

// Elements that do not exist read as zeros and get no entry.
QByteArray MemoryModel::load(int station, int area, long long element, int bytes)
{
    QByteArray value(bytes, '\0');
    if (m_multi && isThere(element))
        value = *entry(station, area, element);
    else if (!m_multi)
        value = loadFromImage(area, element);
    return value.left(bytes).leftJustified(bytes, '\0');
}

QByteArray MemoryModel::read(int area, int station, int address, int count)
{
    QByteArray out;
    if (area == doubleWordArea)
        return readDoubleWords(station, address, count);
    for (int i = 0; isKnownArea(area) && i < count; ++i) {
        const long long element = static_cast<long long>(address) + i;
        if (area != bitOfWordArea) {
            out += load(station, area, element, bytesOf(area));
            continue;
        }
        const unsigned int word =
            isBitThere(element) ? valueOf(load(station, wordArea, element / bitsOfWord, 2)) : 0;
        out.append(static_cast<char>(word >> (element % bitsOfWord) & 1));
    }
    for (int i = 0; isBitArea(area) && i < out.size(); ++i)
        out[i] = static_cast<char>(out.at(i) & 1);
    return out;
}

// The count is one more than the double words. A count of 1 is a half: in the image of the element after the
// address. A count of 0 gives one element from the image, none of a station.
QByteArray MemoryModel::readDoubleWords(int station, int address, int count)
{
    const long long first = address;
    if (count == 1)
        return load(station, doubleWordArea, m_multi ? first : first + 1, 4).left(2);
    QByteArray out;
    const int number = count < 2 && !m_multi ? 1 : count - 1;
    for (int i = 0; i < number; ++i)
        out += load(station, doubleWordArea, first + i, 4);
    return out;
}

void MemoryModel::compareEntries() const
{
    const QList<EXTENDVAR>& list = PLC_driver.extendList;
    check(list.size() == static_cast<int>(m_order.size()),
          "values per station are made for the elements that were used, and for no others");
    for (int i = 0; i < list.size(); ++i) {
        const EXTENDVAR& held = list.at(i);
        const auto at = static_cast<std::size_t>(i);
        check(Key(held.station, held.area, held.address) == m_order[at],
              "values per station are only appended, in the order of their first use");
        check(held.value == m_values[at], "a value per station is what was filed or written last");
    }
}

void MemoryModel::compare(bool wholeImage) const
{
    compareEntries();
    if (!wholeImage)
        return;
    // Compared as bytes: a cell that is neither 0 nor 1 differs, and none is read as a bool.
    check(std::memcmp(PLC_driver.image.bitArea, m_image->bitArea, sizeof m_image->bitArea) == 0,
          "bit areas hold what was filed and written, in cells of 0 or 1, and nothing outside of it");
    check(std::memcmp(PLC_driver.image.wordArea, m_image->wordArea, sizeof m_image->wordArea) == 0,
          "word areas hold what was filed and written, and nothing outside of it");
    check(std::memcmp(PLC_driver.image.dwordArea, m_image->dwordArea, sizeof m_image->dwordArea) == 0,
          "double words are those that were filed and written, and no others");
}

} // namespace fuzz
