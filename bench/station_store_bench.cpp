// SPDX-License-Identifier: MIT
// What filing a reply costs in multi-station mode, where each element is found by a walk over the store.
// Beside it: the same walks over plain structs reached through pointers.

#include "driver/modbus_rtu_master.h"
#include "frames/read_request.h"
#include "image/extended_variables.h"
#include "image/reply_filing.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace
{

const int replyWords = 100;
const int wordArea = 9;

// The last hundred elements of the store are those of the reply: each walk passes nearly all of it.
void fillStore(int elements)
{
    PLC_driver.extendList.clear();
    for (int i = 0; i < elements; ++i)
        ExtendFindSameVar(1, wordArea, i);
}

void readInFlight(int firstElement)
{
    RW_VAR request = RW_VAR();
    request.area = wordArea;
    request.address = firstElement;
    request.station = 1;
    request.count = replyWords;
    PLC_driver.protocolList.clear();
    ReadRegister(&request);
}

void driverFilesWords(benchmark::State& state)
{
    COMINFO info = COMINFO();
    info.multiStation = 1;
    SetComInfo(&info);
    const int elements = static_cast<int>(state.range(0));
    fillStore(elements);
    readInFlight(elements - replyWords);
    QByteArray reply(9 + 2 * replyWords, '\x12');
    for (auto _ : state)
        SaveToLocalDataErea(&reply);
    if (PLC_driver.extendList.size() != elements)
        state.SkipWithError("the store has grown");
    PLC_driver.protocolList.clear();
    PLC_driver.extendList.clear();
    SetComInfo(nullptr);
}

struct Plain {
    int station;
    int area;
    int address;
    int value;
};

void plainStructsAreWalked(benchmark::State& state)
{
    std::vector<std::unique_ptr<Plain>> entries;
    for (int i = 0; i < static_cast<int>(state.range(0)); ++i)
        entries.push_back(std::make_unique<Plain>(Plain{1, wordArea, i, 0}));
    const int first = static_cast<int>(entries.size()) - replyWords;
    for (auto _ : state) {
        for (int word = 0; word < replyWords; ++word) {
            for (const auto& entry : entries) {
                if (entry->station == 1 && entry->area == wordArea && entry->address == first + word) {
                    entry->value = word;
                    break;
                }
            }
        }
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(driverFilesWords)->Name("filing 100 words/driver")->ArgName("store")->Arg(1000)->Arg(10000);
BENCHMARK(plainStructsAreWalked)
    ->Name("filing 100 words/plain structs")
    ->ArgName("store")
    ->Arg(1000)
    ->Arg(10000);
