// What filing a reply costs in multi-station mode, where each element is found by a walk over the store.

#include "driver/modbus_rtu_master.h"
#include "driver/reply_handling.h"
#include "frames/read_request.h"
#include "image/reply_filing.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace
{

const int replyWords = 100;

// A store of the given size whose last hundred elements are those of the reply: each lookup walks nearly all
// of it.
void fillStore(int elements)
{
    PLC_driver.extendList.clear();
    for (int i = 0; i < elements; ++i)
        ExtendFindSameVar(1, 9, i);
}

void FilesAHundredWords(benchmark::State& state)
{
    COMINFO info = COMINFO();
    info.multiStation = 1;
    SetComInfo(&info);
    const int elements = static_cast<int>(state.range(0));
    fillStore(elements);
    RW_VAR request = RW_VAR();
    request.area = 9;
    request.address = elements - replyWords;
    request.station = 1;
    request.count = replyWords;
    PLC_driver.protocolList.clear();
    ReadRegister(&request);
    QByteArray reply(9 + 2 * replyWords, '\x12');
    for (auto _ : state)
        SaveToLocalDataErea(&reply);
    PLC_driver.protocolList.clear();
    PLC_driver.extendList.clear();
    SetComInfo(nullptr);
}

struct PlainEntry {
    int station;
    int area;
    int address;
    int value;
};

// The floor: the same walk over plain structs reached through pointers.
void WalksPlainStructs(benchmark::State& state)
{
    std::vector<std::unique_ptr<PlainEntry>> owned;
    std::vector<PlainEntry*> entries;
    for (int i = 0; i < static_cast<int>(state.range(0)); ++i) {
        owned.push_back(std::make_unique<PlainEntry>(PlainEntry{1, 9, i, 0}));
        entries.push_back(owned.back().get());
    }
    const int first = static_cast<int>(entries.size()) - replyWords;
    for (auto _ : state) {
        for (int word = 0; word < replyWords; ++word) {
            for (PlainEntry* entry : entries) {
                if (entry->station == 1 && entry->area == 9 && entry->address == first + word) {
                    entry->value = word;
                    break;
                }
            }
        }
        benchmark::ClobberMemory();
    }
}

} // namespace

BENCHMARK(FilesAHundredWords)->ArgName("elements")->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(WalksPlainStructs)->ArgName("elements")->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
