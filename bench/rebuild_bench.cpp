// SPDX-License-Identifier: MIT
// How long rebuilding the read list takes for lists of any length and order. Beside it: reading the same
// texts into plain structs and sorting those.

#include "driver/modbus_rtu_master.h"
#include "frames/address_map.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace
{

const int blockWords = 63;
const int wordArea = 9;
const int wordBits = 16;
const int stations = 10;
const int longestList = 50000;

enum class Order { Sorted, Reversed, Random };
enum class Spread { OneArea, AllAreas, Stations };

struct List {
    int size;
    Order order;
    Spread spread;
};

QString textOf(int area, int element)
{
    const Area& row = *FindArea(area);
    if (row.kind == Area::BitOfWord)
        return QStringLiteral("%1.%2").arg(element / wordBits).arg(element % wordBits);
    return QString::number(element + row.textOrigin, row.textBase);
}

HOST_VAR variableOf(const List& list, int i)
{
    const int areas = list.spread == Spread::AllAreas ? PLC_AREA_COUNT : 1;
    const int perArea = (list.size + areas - 1) / areas;
    HOST_VAR variable = HOST_VAR();
    variable.area = static_cast<unsigned char>(list.spread == Spread::AllAreas ? i / perArea : wordArea);
    variable.station = static_cast<unsigned char>(list.spread == Spread::Stations ? 1 + i % stations : 1);
    variable.address = textOf(variable.area, i % perArea);
    variable.count = 1;
    return variable;
}

using Random = std::mt19937;

QList<HOST_VAR> variablesOf(const List& list, Random& random)
{
    std::vector<int> order(static_cast<std::size_t>(list.size));
    for (int i = 0; i < list.size; ++i)
        order[static_cast<std::size_t>(i)] = i;
    if (list.order == Order::Reversed)
        std::reverse(order.begin(), order.end());
    if (list.order == Order::Random)
        std::shuffle(order.begin(), order.end(), random);
    QList<HOST_VAR> variables;
    for (const int i : order)
        variables.append(variableOf(list, i));
    return variables;
}

/// As many lists as make longestList variables. A panel rebuilds a list once; over and over, the processor
/// would learn the order of a short one by heart.
class Lists
{
public:
    explicit Lists(const List& list)
    {
        Random random(1);
        for (int variables = 0; variables < longestList; variables += list.size)
            m_lists.push_back(variablesOf(list, random));
    }

    QList<HOST_VAR>& next()
    {
        m_next = (m_next + 1) % m_lists.size();
        return m_lists[m_next];
    }

private:
    std::vector<QList<HOST_VAR>> m_lists;
    std::size_t m_next = 0;
};

void driverRebuilds(benchmark::State& state, const List& list)
{
    COMINFO info = COMINFO();
    info.maxBlockCount = blockWords;
    info.multiStation = list.spread == Spread::Stations ? 1 : 0;
    SetComInfo(&info);
    Lists lists(list);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReCreatReadVarList(&lists.next()));
    state.counters["requests"] = PLC_driver.readList.size();
    PLC_driver.readList.clear();
    SetComInfo(nullptr);
}

struct Plain {
    int station;
    int area;
    int address;
    int count;
};

int elementOf(const Area& row, const QString& text)
{
    if (row.kind != Area::BitOfWord)
        return text.toInt(nullptr, row.textBase) - row.textOrigin;
    const int dot = text.indexOf(QLatin1Char('.'));
    return text.left(dot).toInt() * wordBits + text.mid(dot + 1).toInt();
}

void plainStructsAreSorted(benchmark::State& state, const List& list)
{
    Lists lists(list);
    for (auto _ : state) {
        std::vector<Plain> plain;
        const QList<HOST_VAR>& variables = lists.next();
        for (const HOST_VAR& variable : variables) {
            const int element = elementOf(*FindArea(variable.area), variable.address);
            plain.push_back({variable.station, variable.area, element, variable.count});
        }
        std::stable_sort(plain.begin(), plain.end(), [](const Plain& a, const Plain& b) {
            return std::tie(a.station, a.area, a.address) < std::tie(b.station, b.area, b.address);
        });
        benchmark::DoNotOptimize(plain.data());
    }
}

std::string nameOf(const List& list)
{
    const char* orders[] = {"sorted", "reversed", "random"};
    const char* spreads[] = {"one area", "all areas", "ten stations"};
    return "rebuild of " + std::to_string(list.size) + ", " + orders[static_cast<int>(list.order)] + ", " +
           spreads[static_cast<int>(list.spread)];
}

void registerList(const List& list)
{
    const std::string name = nameOf(list);
    benchmark::RegisterBenchmark((name + "/driver").c_str(), driverRebuilds, list)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((name + "/plain structs").c_str(), plainStructsAreSorted, list)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char* argv[])
{
    for (const int size : {1000, 10000, longestList}) {
        for (const Order order : {Order::Sorted, Order::Reversed, Order::Random}) {
            for (const Spread spread : {Spread::OneArea, Spread::AllAreas, Spread::Stations})
                registerList({size, order, spread});
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
