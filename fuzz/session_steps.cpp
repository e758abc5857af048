// SPDX-License-Identifier: MIT
#include "fuzz/session_steps.h"

#include "fuzz/check.h"

namespace fuzz
{

namespace
{

RW_VAR takeRecord(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    RW_VAR var = fuzz::takeRecord(source, driver.settings());
    var.count = counts.cut(var.count, true);
    return var;
}

void addRead(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    RW_VAR var = takeRecord(driver, source, counts);
    driver.addRead(&var);
}

void addWrite(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    const int direct = source.byte();
    RW_VAR var = takeRecord(driver, source, counts);
    driver.addWrite(&var, direct);
}

void addOnceRead(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    const int direct = source.byte();
    RW_VAR var = takeRecord(driver, source, counts);
    driver.addOnceRead(&var, direct);
}

void rebuild(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    QList<HOST_VAR> list;
    for (int variables = source.below(24); variables > 0; --variables)
        list.append(takeHostVariable(source, counts));
    driver.rebuild(&list);
}

void switchStation(CheckedDriver& driver, ByteSource& source, CountLimit&)
{
    const int station = source.number();
    driver.switchStation(station, source.number());
}

void setRegister(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    driver.setRegister(takeRecord(driver, source, counts));
}

void getRegister(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    driver.getRegister(takeRecord(driver, source, counts));
}

void poll(CheckedDriver& driver, ByteSource&, CountLimit&)
{
    driver.poll();
}

void reply(CheckedDriver& driver, ByteSource& source, CountLimit&)
{
    takeReply(source, driver);
}

// What a runtime does all the time, in one byte and the reply's.
void pollAndReply(CheckedDriver& driver, ByteSource& source, CountLimit&)
{
    driver.poll();
    takeReply(source, driver);
}

void changeSetting(CheckedDriver& driver, ByteSource& source, CountLimit&)
{
    takeSetting(source, driver.settings());
}

void wire(CheckedDriver& driver, ByteSource& source, CountLimit&)
{
    const int what = source.byte();
    driver.wire((what & 1) == 0);
    driver.registerCallbacks((what & 2) == 0, (what & 4) == 0);
    FlashLocalRegister(&driver, nullptr, &source);
    check(LB == &driver && LW == nullptr && RWI == &source, "the runtime's pointers are kept in their order");
}

void callWithNulls(CheckedDriver& driver, ByteSource&, CountLimit&)
{
    driver.callWithNulls();
}

// Checksums against their plainest writing; the block check against its own property.
void checksums(CheckedDriver&, ByteSource& source, CountLimit&)
{
    std::vector<std::uint8_t> bytes = source.bytes(static_cast<std::size_t>(source.byte()));
    const auto size = static_cast<unsigned short>(bytes.size());
    unsigned int sum = 0;
    unsigned int exclusive = 0;
    for (const std::uint8_t byte : bytes) {
        sum += byte;
        exclusive ^= byte;
    }
    bytes.resize(bytes.size() + 2); // so that there is a first byte, and room for the check
    check(CalSUM(bytes.data(), size) == (sum & 0xFFFF), "the sum is that of the bytes");
    check(CalXOR(bytes.data(), size) == exclusive, "the exclusive-or is that of the bytes");
    check(CalLRC(bytes.data(), size) == (~sum & 0xFF) + 1, "the longitudinal check is 1 to 256");
    const unsigned short crc = CalCRC(bytes.data(), size);
    bytes[size] = static_cast<std::uint8_t>(crc & 0xFF);
    bytes[size + 1u] = static_cast<std::uint8_t>(crc >> 8);
    check(CalCRC(bytes.data(), static_cast<unsigned short>(size + 2)) == 0,
          "bytes that end with their own check have the check 0");
    const int digit = source.below(16);
    check(ASCIIToDigital(DigitalToASCII(digit)) == digit, "a digit passes through its character unchanged");
}

using Step = void (*)(CheckedDriver&, ByteSource&, CountLimit&);

const Step steps[] = {poll,        reply,         pollAndReply,  addRead,      addWrite,
                      addOnceRead, rebuild,       switchStation, setRegister,  getRegister,
                      wire,        callWithNulls, checksums,     changeSetting};
static_assert(sizeof steps / sizeof steps[0] == stepCount, "a byte says which of them");

// Every element per station that is filed, written or read costs a walk over them all: enough is enough.
const int mostStationValues = 2000;

} // namespace

bool isFull()
{
    return PLC_driver.extendList.size() > mostStationValues;
}

void takeStep(CheckedDriver& driver, ByteSource& source, CountLimit& counts)
{
    steps[source.below(stepCount)](driver, source, counts);
}

} // namespace fuzz
