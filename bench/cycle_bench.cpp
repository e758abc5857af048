// SPDX-License-Identifier: MIT
// What one request cycle costs in process: queue where it is a write, ask for the frame, hand in the reply.
// Beside each: the floor, which only allocates the frames and moves the values; the records, which adds the
// locks and the entries of lists that the runtime's interface takes, and does nothing with them; and what Qt
// SerialBus does for the same request.

#include "bench/allocation_count.h"
#include "bench/serialbus_codec.h"
#include "driver/plcdriver.h"

#include <benchmark/benchmark.h>

#include <QMutex>

#include <algorithm>
#include <cstdlib>

namespace
{

const int readWords = 125;
const int readBits = 1000;
const int readBlocks = 8; // so that the read list really rotates
const int blockWords = 125;
const int firstElement = 100;
const int wordArea = 9;
const int bitArea = 2;
const int bitOfWordArea = 8;

/// A driver wired as a runtime does it, and left empty at the end.
class Wiring
{
public:
    Wiring()
    {
        m_info.maxBlockCount = blockWords;
        m_info.defaultStation = 1;
        m_info.retryLimit = 3;
        m_info.hostWriteMode = 2;
        SetComInfo(&m_info);
        RegistCallBackFuncIntf(nullptr, nullptr);
    }

    ~Wiring()
    {
        QList<HOST_VAR> nothing;
        ReCreatReadVarList(&nothing);
        SetComInfo(nullptr);
    }

    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;

private:
    COMINFO m_info = COMINFO();
};

/// Full blocks one behind the other.
void readCyclically(int area, int count)
{
    QList<HOST_VAR> list;
    for (int block = 0; block < readBlocks; ++block) {
        HOST_VAR variable = HOST_VAR();
        variable.area = static_cast<unsigned char>(area);
        variable.address = QString::number(firstElement + block * count);
        variable.count = count;
        list.append(variable);
    }
    ReCreatReadVarList(&list);
}

QByteArray readReply(char function, int bytes)
{
    QByteArray reply("\0\0\0\0\0\0\x01", 7);
    reply[4] = static_cast<char>((3 + bytes) >> 8);
    reply[5] = static_cast<char>(3 + bytes);
    reply.append(function).append(static_cast<char>(bytes));
    for (int i = 0; i < bytes; ++i)
        reply.append(static_cast<char>(i + 1));
    return reply;
}

QByteArray frameOf(const char* hex)
{
    return QByteArray::fromHex(hex);
}

void reportAllocations(benchmark::State& state, unsigned long before)
{
    state.counters["allocations"] =
        static_cast<double>(bench::allocationCount() - before) /
        static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
}

/// Runs \a cycle, which says whether it went well, and counts what it allocates.
template <class Cycle>
void measure(benchmark::State& state, const Cycle& cycle)
{
    if (!cycle())
        return state.SkipWithError("the cycle does not work");
    const unsigned long before = bench::allocationCount();
    for (auto _ : state) {
        bool good = cycle();
        benchmark::DoNotOptimize(good);
    }
    reportAllocations(state, before);
}

/// After five writes in a row the driver hands out nothing once, so it is asked again.
bool exchange(QByteArray& reply)
{
    return (ComCommunication() || ComCommunication()) && DataCom(&reply, reply.size())->result == PLC_DONE;
}

// The driver.

void driverReadsWords(benchmark::State& state)
{
    Wiring wiring;
    readCyclically(wordArea, readWords);
    QByteArray reply = readReply(3, 2 * readWords);
    measure(state, [&] { return exchange(reply); });
}

void driverReadsBits(benchmark::State& state)
{
    Wiring wiring;
    readCyclically(bitArea, readBits);
    QByteArray reply = readReply(1, readBits / 8);
    measure(state, [&] { return exchange(reply); });
}

RW_VAR writeRequest(int area, int address, const QByteArray& data)
{
    RW_VAR write = RW_VAR();
    write.area = area;
    write.address = address;
    write.station = 1;
    write.count = 1;
    write.accessFlag = 1; // as SetRegisterData() queues it
    write.data = data;
    return write;
}

void driverWritesWord(benchmark::State& state)
{
    Wiring wiring;
    RW_VAR write = writeRequest(wordArea, firstElement, frameOf("3412"));
    QByteArray reply = frameOf("000000000006010600641234");
    measure(state, [&] { return AddListWriteVar(&write, 0) == 1 && exchange(reply); });
}

void driverWritesBitOfWord(benchmark::State& state)
{
    Wiring wiring;
    RW_VAR write = writeRequest(bitOfWordArea, 16 * firstElement + 3, frameOf("01"));
    QByteArray word = frameOf("0000000000050103021234");
    QByteArray echo = frameOf("00000000000601060064123C");
    measure(state, [&] { return AddListWriteVar(&write, 0) == 1 && exchange(word) && exchange(echo); });
}

// The floor.

const int frameBytes = 12;

char* newFrame()
{
    char* frame = static_cast<char*>(std::malloc(frameBytes));
    benchmark::DoNotOptimize(frame);
    return frame;
}

const unsigned char* dataOf(const QByteArray& reply)
{
    return reinterpret_cast<const unsigned char*>(reply.constData()) + 9;
}

void moveWords(const QByteArray& reply)
{
    unsigned short words[readWords];
    const unsigned char* data = dataOf(reply);
    for (int i = 0; i < readWords; ++i)
        words[i] = static_cast<unsigned short>(data[2 * i] << 8 | data[2 * i + 1]);
    benchmark::DoNotOptimize(words);
}

void moveBits(const QByteArray& reply)
{
    bool bits[readBits];
    const unsigned char* data = dataOf(reply);
    for (int byte = 0; byte < readBits / 8; ++byte) {
        const unsigned int eight = data[byte];
        for (int bit = 0; bit < 8; ++bit)
            bits[8 * byte + bit] = ((eight >> bit) & 1) != 0;
    }
    benchmark::DoNotOptimize(bits);
}

void floorReadsWords(benchmark::State& state)
{
    const QByteArray reply = readReply(3, 2 * readWords);
    measure(state, [&] {
        char* frame = newFrame();
        moveWords(reply);
        std::free(frame);
        return true;
    });
}

void floorReadsBits(benchmark::State& state)
{
    const QByteArray reply = readReply(1, readBits / 8);
    measure(state, [&] {
        char* frame = newFrame();
        moveBits(reply);
        std::free(frame);
        return true;
    });
}

void floorWritesWord(benchmark::State& state)
{
    measure(state, [] {
        std::free(newFrame());
        return true;
    });
}

void floorWritesBitOfWord(benchmark::State& state)
{
    measure(state, [] {
        std::free(newFrame());
        std::free(newFrame());
        return true;
    });
}

// The records: locks are taken and left, entries go into lists and out of them, as often as in the driver.

class Records
{
public:
    explicit Records(const RW_VAR& request) : m_request(request)
    {
        for (int block = 0; block < readBlocks; ++block)
            m_readList.append(request);
    }

    void lock(int times)
    {
        for (; times > 0; --times) {
            const QMutexLocker locker(&m_mutex);
            benchmark::ClobberMemory();
        }
    }

    void queueWrite() { m_writeList.append(m_request); }

    void queueFrame()
    {
        m_protocolList.append(Protocol());
        m_protocolList.last().frame = QByteArray(frameBytes, '\0');
        m_protocolList.last().var = m_request;
    }

    void takeReply() { m_protocolList.removeFirst(); }

    void endRead()
    {
        m_result = m_readList.at(0);
        m_readList.move(0, readBlocks - 1);
    }

    void endWrite()
    {
        m_result = m_writeList.at(0);
        m_writeList.removeFirst();
    }

private:
    const RW_VAR m_request;
    RW_VAR m_result = RW_VAR();
    QMutex m_mutex;
    QList<RW_VAR> m_readList;
    QList<RW_VAR> m_writeList;
    QList<Protocol> m_protocolList;
};

const int readLocks = 4;
const int writeLocks = 5;
const int bitOfWordLocks = 8;

template <class MoveValues>
void recordsOfRead(benchmark::State& state, const QByteArray& reply, const MoveValues& moveValues)
{
    Records records((RW_VAR()));
    measure(state, [&] {
        records.lock(readLocks);
        records.queueFrame();
        moveValues(reply);
        records.takeReply();
        records.endRead();
        return true;
    });
}

void recordsOfWordsRead(benchmark::State& state)
{
    recordsOfRead(state, readReply(3, 2 * readWords), moveWords);
}

void recordsOfBitsRead(benchmark::State& state)
{
    recordsOfRead(state, readReply(1, readBits / 8), moveBits);
}

void recordsOfWordWritten(benchmark::State& state)
{
    Records records(writeRequest(wordArea, firstElement, frameOf("3412")));
    measure(state, [&] {
        records.lock(writeLocks);
        records.queueWrite();
        records.queueFrame();
        records.takeReply();
        records.endWrite();
        return true;
    });
}

void recordsOfBitWritten(benchmark::State& state)
{
    Records records(writeRequest(bitOfWordArea, 16 * firstElement + 3, frameOf("01")));
    measure(state, [&] {
        records.lock(bitOfWordLocks);
        records.queueWrite();
        records.queueFrame();
        records.queueFrame();
        records.takeReply();
        records.takeReply();
        records.endWrite();
        return true;
    });
}

// Qt SerialBus.

using Registers = QModbusDataUnit::RegisterType;

bool serialBusExchange(bench::SerialBusCodec& codec, const QModbusRequest& request, Registers type, int count,
                       const QByteArray& reply)
{
    const QByteArray frame = codec.encode(request);
    QModbusDataUnit unit(type, firstElement, static_cast<quint16>(count));
    return !frame.isEmpty() && codec.decode(reply, &unit);
}

QModbusRequest wordRequest(QModbusPdu::FunctionCode function, int valueOrCount)
{
    return QModbusRequest(function, quint16(firstElement), static_cast<quint16>(valueOrCount));
}

void serialBusReadsWords(benchmark::State& state)
{
    bench::SerialBusCodec codec;
    const QByteArray reply = readReply(3, 2 * readWords);
    measure(state, [&] {
        return serialBusExchange(codec, wordRequest(QModbusPdu::ReadHoldingRegisters, readWords),
                                 QModbusDataUnit::HoldingRegisters, readWords, reply);
    });
}

void serialBusReadsBits(benchmark::State& state)
{
    bench::SerialBusCodec codec;
    const QByteArray reply = readReply(1, readBits / 8);
    measure(state, [&] {
        return serialBusExchange(codec, wordRequest(QModbusPdu::ReadCoils, readBits), QModbusDataUnit::Coils,
                                 readBits, reply);
    });
}

void serialBusWritesWord(benchmark::State& state)
{
    bench::SerialBusCodec codec;
    const QByteArray reply = frameOf("000000000006010600641234");
    measure(state, [&] {
        return serialBusExchange(codec, wordRequest(QModbusPdu::WriteSingleRegister, 0x1234),
                                 QModbusDataUnit::HoldingRegisters, 1, reply);
    });
}

void serialBusWritesBitOfWord(benchmark::State& state)
{
    bench::SerialBusCodec codec;
    const QByteArray word = frameOf("0000000000050103021234");
    const QByteArray echo = frameOf("00000000000601060064123C");
    measure(state, [&] {
        return serialBusExchange(codec, wordRequest(QModbusPdu::ReadHoldingRegisters, 1),
                                 QModbusDataUnit::HoldingRegisters, 1, word) &&
               serialBusExchange(codec, wordRequest(QModbusPdu::WriteSingleRegister, 0x123C),
                                 QModbusDataUnit::HoldingRegisters, 1, echo);
    });
}

} // namespace

BENCHMARK(driverReadsWords)->Name("read of 125 words/driver");
BENCHMARK(floorReadsWords)->Name("read of 125 words/floor");
BENCHMARK(recordsOfWordsRead)->Name("read of 125 words/records");
BENCHMARK(serialBusReadsWords)->Name("read of 125 words/Qt SerialBus");
BENCHMARK(driverReadsBits)->Name("read of 1000 bits/driver");
BENCHMARK(floorReadsBits)->Name("read of 1000 bits/floor");
BENCHMARK(recordsOfBitsRead)->Name("read of 1000 bits/records");
BENCHMARK(serialBusReadsBits)->Name("read of 1000 bits/Qt SerialBus");
BENCHMARK(driverWritesWord)->Name("write of a word/driver");
BENCHMARK(floorWritesWord)->Name("write of a word/floor");
BENCHMARK(recordsOfWordWritten)->Name("write of a word/records");
BENCHMARK(serialBusWritesWord)->Name("write of a word/Qt SerialBus");
BENCHMARK(driverWritesBitOfWord)->Name("write of a bit in a word/driver");
BENCHMARK(floorWritesBitOfWord)->Name("write of a bit in a word/floor");
BENCHMARK(recordsOfBitWritten)->Name("write of a bit in a word/records");
BENCHMARK(serialBusWritesBitOfWord)->Name("write of a bit in a word/Qt SerialBus");
