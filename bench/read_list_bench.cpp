// How long sorting and rebuilding take for lists in any order.

#include "driver/modbus_rtu_master.h"
#include "varlist/read_list.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace
{

enum Order { Sorted, Reversed, Random };

std::vector<int> addresses(int count, Order order)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        numbers[static_cast<std::size_t>(i)] = i;
    if (order == Reversed)
        std::reverse(numbers.begin(), numbers.end());
    if (order == Random)
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}

void SortsOneArea(benchmark::State& state)
{
    const std::vector<int> order =
        addresses(static_cast<int>(state.range(0)), static_cast<Order>(state.range(1)));
    for (auto _ : state) {
        state.PauseTiming();
        QList<RW_VAR> list;
        for (const int address : order) {
            RW_VAR var = RW_VAR();
            var.address = address;
            list.append(var);
        }
        state.ResumeTiming();
        Bubble_Sort(&list);
        benchmark::DoNotOptimize(list);
        state.PauseTiming();
        list.clear();
        state.ResumeTiming();
    }
}

void RebuildsOneArea(benchmark::State& state)
{
    COMINFO info = COMINFO();
    info.maxBlockCount = 125;
    SetComInfo(&info);
    QList<HOST_VAR> list;
    for (const int address :
         addresses(static_cast<int>(state.range(0)), static_cast<Order>(state.range(1)))) {
        HOST_VAR variable = HOST_VAR();
        variable.area = 9;
        variable.address = QString::number(address);
        variable.count = 1;
        list.append(variable);
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(ReCreatReadVarList(&list));
    state.counters["requests"] = PLC_driver.readList.size();
    PLC_driver.readList.clear();
    SetComInfo(nullptr);
}

void sizesAndOrders(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"variables", "order"})->Unit(benchmark::kMillisecond);
    for (const int size : {1000, 10000, 50000})
        for (const int order : {Sorted, Reversed, Random})
            bench->Args({size, order});
}

} // namespace

BENCHMARK(SortsOneArea)->Apply(sizesAndOrders);
BENCHMARK(RebuildsOneArea)->Apply(sizesAndOrders);
