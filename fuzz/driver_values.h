// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver's records and settings, taken from a byte string.
#ifndef FUZZ_DRIVER_VALUES_H
#define FUZZ_DRIVER_VALUES_H

#include "driver/plcdriver.h"
#include "fuzz/byte_source.h"

namespace fuzz
{

class CheckedDriver;

/// What begins a record says which of its fields follow; the others keep what an ordinary request has.
enum RecordParts {
    WithKeys = 1,
    WithGroup = 2,
    WithAccessFlag = 4,
    WithSelector = 8,
    WithData = 16,
    WithText = 32,
    WithLongData = 64 ///< the length of the data has 16 bits
};

/// An input that begins with it has the whole image compared after each call. That is slow; it shows which
/// call it was that stored something where it does not belong, once another input showed that one does.
constexpr int carefulInput = 0xCA;

/// The words of the settings that a runtime changes.
constexpr std::array<int COMINFO::*, 12> settingsWords = {
    &COMINFO::maxBlockCount, &COMINFO::defaultStation, &COMINFO::retryLimit,     &COMINFO::multiStation,
    &COMINFO::remoteMode,    &COMINFO::localStation,   &COMINFO::hostWriteMode,  &COMINFO::cycleDone,
    &COMINFO::portId,        &COMINFO::failCount,      &COMINFO::framesExpected, &COMINFO::framesReceived};

/// Keeps most counts small. The driver serves any count, but per station it walks a list for each element,
/// and a long write is cut into a request for each bit: with large counts an input would take seconds and
/// show nothing that a few hundred elements do not.
class CountLimit
{
public:
    explicit CountLimit(ByteSource& source) : m_large(source.byte() == 1 ? 2 : 0) {}

    /// \param dear where a large count costs much
    int cut(int count, bool dear);

private:
    int m_large; // counts that may still be large
};

RW_VAR takeRecord(ByteSource& source, const COMINFO& settings);
HOST_VAR takeHostVariable(ByteSource& source, CountLimit& counts);
QByteArray takeData(ByteSource& source, bool longData);
QString takeText(ByteSource& source);

/// Settings as a runtime begins with, and those that the source changes.
COMINFO takeSettings(ByteSource& source);

/// What comes back for the frame in flight, if any, given to the driver: as many bytes as it waits for,
/// nothing, or any bytes with any announced length.
void takeReply(ByteSource& source, CheckedDriver& driver);

/// Changes one word.
void takeSetting(ByteSource& source, COMINFO& settings);

} // namespace fuzz

#endif
