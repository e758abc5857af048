// SPDX-License-Identifier: MIT
// What the runtime's other threads pay: reading and writing registers by address text, and queueing a write
// while the list is full. Beside each, the same bytes or the same walk without the driver.

#include "driver/modbus_rtu_master.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

namespace
{

const int wordArea = 9;
const int firstElement = 100;
const int queueWrites = 2;

/// A wired driver with empty lists.
class Wiring
{
public:
    Wiring()
    {
        m_info.maxBlockCount = 125;
        m_info.defaultStation = 1;
        m_info.hostWriteMode = queueWrites;
        SetComInfo(&m_info);
    }

    ~Wiring()
    {
        PLC_driver.writeList.clear();
        SetComInfo(nullptr);
    }

    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;

private:
    COMINFO m_info = COMINFO();
};

QString address()
{
    return QString::number(firstElement);
}

void driverGetsWords(benchmark::State& state)
{
    Wiring wiring;
    QString text = address();
    QByteArray out;
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(GetRegisterData(0, wordArea, &text, 1, &out, count));
}

void textAndBytes(benchmark::State& state)
{
    static unsigned short words[PLC_AREA_ELEMENTS];
    const QString text = address();
    const int count = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const int element = text.toInt();
        QByteArray out(2 * count, '\0');
        std::memcpy(out.data(), words + element, static_cast<std::size_t>(out.size()));
        benchmark::DoNotOptimize(out.data());
    }
}

/// The second write finds the first at the head, which is never replaced; every later one replaces it.
void driverSetsWords(benchmark::State& state)
{
    Wiring wiring;
    const int count = static_cast<int>(state.range(0));
    QString name = QStringLiteral("speed");
    QString text = address();
    QByteArray data(2 * count, '\x12');
    for (auto _ : state)
        benchmark::DoNotOptimize(SetRegisterData(&name, wordArea, &text, 1, &data, count, 1, 1));
}

RW_VAR writeTo(int element)
{
    RW_VAR write = RW_VAR();
    write.area = wordArea;
    write.address = element;
    write.station = 1;
    write.count = 1;
    write.data = QByteArray(2, '\x12');
    return write;
}

void driverDropsAWrite(benchmark::State& state)
{
    Wiring wiring;
    for (int i = 0; i < PLC_LIST_LIMIT; ++i) {
        RW_VAR write = writeTo(i);
        AddListWriteVar(&write, 0);
    }
    RW_VAR oneMore = writeTo(PLC_LIST_LIMIT);
    for (auto _ : state)
        benchmark::DoNotOptimize(AddListWriteVar(&oneMore, 0));
    if (PLC_driver.writeList.size() != PLC_LIST_LIMIT)
        state.SkipWithError("the list is not full");
}

struct Plain {
    int station;
    int area;
    int address;
    int count;
};

void walkOfPlainStructs(benchmark::State& state)
{
    std::vector<std::unique_ptr<Plain>> entries;
    for (int i = 0; i < PLC_LIST_LIMIT; ++i)
        entries.push_back(std::make_unique<Plain>(Plain{1, wordArea, i, 1}));
    Plain wanted = {1, wordArea, PLC_LIST_LIMIT, 1};
    for (auto _ : state) {
        benchmark::DoNotOptimize(wanted);
        const Plain* found = nullptr;
        for (const auto& entry : entries) {
            if (entry->station == wanted.station && entry->area == wanted.area &&
                entry->address == wanted.address && entry->count == wanted.count) {
                found = entry.get();
                break;
            }
        }
        benchmark::DoNotOptimize(found);
    }
}

} // namespace

BENCHMARK(driverGetsWords)->Name("GetRegisterData/driver")->ArgName("words")->Arg(1)->Arg(100);
BENCHMARK(textAndBytes)->Name("GetRegisterData/text and bytes")->ArgName("words")->Arg(1)->Arg(100);
BENCHMARK(driverSetsWords)->Name("SetRegisterData/driver")->ArgName("words")->Arg(1)->Arg(100);
BENCHMARK(textAndBytes)->Name("SetRegisterData/text and bytes")->ArgName("words")->Arg(1)->Arg(100);
BENCHMARK(driverDropsAWrite)->Name("AddListWriteVar, list full/driver");
BENCHMARK(walkOfPlainStructs)->Name("AddListWriteVar, list full/plain structs");
