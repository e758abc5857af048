// SPDX-License-Identifier: MIT
/// \file
/// \brief What the driver's memory must hold, by an account of its own.
///
/// A second, slow and plain writing of the rules for filing replies, mirroring writes and reading registers.
/// Whatever the driver stores beyond it, or not, is a difference that compare() finds: values outside the
/// elements of a request above all.
#ifndef FUZZ_MEMORY_MODEL_H
#define FUZZ_MEMORY_MODEL_H

#include "driver/modbus_rtu_master.h"

#include <map>
#include <tuple>
#include <vector>

namespace fuzz
{

/// The head of the write list as a reply finds it.
struct QueuedBit {
    bool queued = false;
    bool hasValue = false;
    bool on = false;
    int address = 0;
};

/// One at a time.
class MemoryModel
{
public:
    MemoryModel();

    /// In which mode the calls below are made, as COMINFO::multiStation.
    void setMultiStation(bool multiStation) { m_multi = multiStation; }

    /// A good reply whose data the request wants filed; \a reply may be null.
    void file(const Protocol& request, const QByteArray* reply, const QueuedBit& bit);

    /// A write as WriteDataToLocal() takes it.
    void mirror(const RW_VAR& var);

    /// \return what GetRegisterData() gives
    QByteArray read(int area, int station, int address, int count);

    /// Compares the values per station, and the image where \a wholeImage says so, which takes its time.
    void compare(bool wholeImage) const;

private:
    using Key = std::tuple<int, int, int>; // station, area, address

    QByteArray* entry(int station, int area, long long address);
    void fileBits(const Protocol& request, const QByteArray& data);
    void fileRegister(const Protocol& request, const QByteArray& data, const QueuedBit& bit);
    void fileElements(const Protocol& request, const QByteArray& data, int bytes);
    void mirrorBitsOfWords(const RW_VAR& var);
    void store(int station, int area, long long element, const QByteArray& value);
    void storeInImage(int area, long long element, const QByteArray& value);
    QByteArray load(int station, int area, long long element, int bytes);
    QByteArray loadFromImage(int area, long long element) const;
    QByteArray readDoubleWords(int station, int address, int count);
    void compareEntries() const;

    bool m_multi = false;
    Image* m_image; // one for all models: a new one for each would take most of an input's time
    std::map<Key, std::size_t> m_index;
    std::vector<Key> m_order;
    std::vector<QByteArray> m_values;
};

/// \return the register that a read-before-write gives, with the queued bit in it
unsigned int mergedWord(unsigned int word, const QueuedBit& bit);

/// \return the data bytes of a reply that are really there
QByteArray dataOf(const Protocol& request, const QByteArray* reply);

} // namespace fuzz

#endif
