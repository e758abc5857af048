// SPDX-License-Identifier: MIT
// How many requests a refresh of a list takes: by the driver and the panel, and by other rules that join
// neighbouring variables into blocks.
//
//     requests_per_refresh LIST...    lists of variables as plcpanel watch --vars takes them
//
// Prints a line for each list and rule, fields separated by tabs.

#include "driver/modbus_rtu_master.h"
#include "runtime/cycle/cyclic_values.h"
#include "runtime/host/request_keys.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/variable_list.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>

namespace
{

using Variables = std::vector<plc::Variable>;

struct Span {
    int begin;
    int end;
};

using Spans = std::vector<Span>; // of one area, by their first element

struct Cost {
    int requests = 0;
    int elements = 0; // read, the unwanted ones included
};

const plc::Settings settings;

Variables variablesOf(const QString& path)
{
    const plc::VariableList list = plc::readVariableList(path);
    for (const QString& error : list.errors)
        std::fprintf(stderr, "%s\n", qPrintable(error));
    Variables variables;
    for (const plc::ListedVariable& listed : list.variables)
        variables.push_back(plc::withStation(listed.elements, settings));
    return variables;
}

// The driver's own grouping.

Cost costOfReadList()
{
    Cost cost;
    for (const RW_VAR& request : PLC_driver.readList) {
        if (request.hostKey != plc::cyclicKey)
            continue;
        ++cost.requests;
        cost.elements += plc::elementsRead(request.area, request.count);
    }
    return cost;
}

/// Wires the linked driver for the time of one grouping.
template <class Group>
Cost costBy(const Group& group)
{
    COMINFO info = COMINFO();
    info.maxBlockCount = settings.maxBlockCount;
    info.defaultStation = settings.station;
    SetComInfo(&info);
    group();
    const Cost cost = costOfReadList();
    PLC_driver.readList.clear();
    SetComInfo(nullptr);
    return cost;
}

Cost costByDriver(const Variables& variables)
{
    QList<HOST_VAR> list;
    for (const plc::Variable& variable : variables) {
        HOST_VAR record = HOST_VAR();
        record.area = static_cast<unsigned char>(variable.area);
        record.address = plc::addressText(variable.area, variable.element);
        record.count = plc::driverReadCount(variable.area, variable.count);
        list.append(record);
    }
    return costBy([&list] { ReCreatReadVarList(&list); });
}

Cost costByPanel(const Variables& variables)
{
    plc::CyclicValues cyclic(settings);
    for (const plc::Variable& variable : variables)
        cyclic.add(variable);
    plc::DriverCalls calls;
    calls.ReCreatReadVarList = ::ReCreatReadVarList;
    calls.AddListReadVar = ::AddListReadVar;
    return costBy([&cyclic, &calls] { cyclic.queue(calls); });
}

// The other rules.

std::map<int, Spans> spansByArea(const Variables& variables)
{
    std::map<int, Spans> areas;
    for (const plc::Variable& variable : variables) {
        const plc::Variable asked = plc::wordsOf(variable);
        areas[asked.area].push_back({asked.element, asked.element + asked.count});
    }
    for (auto& area : areas) {
        std::sort(area.second.begin(), area.second.end(), [](const Span& a, const Span& b) {
            return a.begin != b.begin ? a.begin < b.begin : a.end < b.end;
        });
    }
    return areas;
}

int mostElements(int area)
{
    if (plc::kindOf(area) == plc::ElementKind::Bit)
        return 8 * settings.maxBlockCount;
    return plc::elementsRead(area, settings.maxBlockCount);
}

Cost costOf(const Spans& blocks)
{
    Cost cost;
    for (const Span& block : blocks)
        cost.elements += block.end - block.begin;
    cost.requests = static_cast<int>(blocks.size());
    return cost;
}

/// Blocks that grow over gaps of at most \a mostGap elements while they stay within \a most; a variable that
/// does not fit opens the next one.
Spans joined(const Spans& spans, int most, int mostGap)
{
    Spans blocks;
    for (const Span& span : spans) {
        const bool joins = !blocks.empty() && span.begin - blocks.back().end <= mostGap &&
                           span.end - blocks.back().begin <= most;
        if (!joins)
            blocks.push_back(span);
        blocks.back().end = std::max(blocks.back().end, span.end);
    }
    return blocks;
}

/// The fewest blocks of at most \a most elements that cover every element of every variable, one variable in
/// several blocks where that saves one: each begins at the lowest element that is not covered yet.
Spans fewest(const Spans& spans, int most)
{
    Spans blocks;
    for (const Span& span : spans) {
        int from = span.begin; // the first element of it that no block covers yet
        if (!blocks.empty() && from < blocks.back().begin + most) {
            from = std::min(span.end, blocks.back().begin + most);
            blocks.back().end = std::max(blocks.back().end, from);
        }
        for (; from < span.end; from += most)
            blocks.push_back({from, std::min(span.end, from + most)});
    }
    return blocks;
}

/// \param group makes the blocks of one area
template <class Group>
Cost costOfAreas(const Variables& variables, const Group& group)
{
    Cost sum;
    for (const auto& area : spansByArea(variables)) {
        const Cost cost = costOf(group(area.second, mostElements(area.first)));
        sum.requests += cost.requests;
        sum.elements += cost.elements;
    }
    return sum;
}

Cost costJoined(const Variables& variables, int mostGap)
{
    return costOfAreas(variables,
                       [mostGap](const Spans& spans, int most) { return joined(spans, most, mostGap); });
}

int elementsAskedFor(const Variables& variables)
{
    return costJoined(variables, 0).elements;
}

void printLine(const QString& list, const char* rule, const Cost& cost, int askedFor)
{
    std::printf("%s\t%s\t%d\t%d\t%.1f\n", qPrintable(list), rule, cost.requests, cost.elements,
                100.0 * (cost.elements - askedFor) / cost.elements);
}

void printList(const QString& path)
{
    const QString name = QFileInfo(path).completeBaseName();
    const Variables variables = variablesOf(path);
    const int askedFor = elementsAskedFor(variables);
    printLine(name, "driver", costByDriver(variables), askedFor);
    printLine(name, "driver under the panel", costByPanel(variables), askedFor);
    printLine(name, "joined when touching", costJoined(variables, 0), askedFor);
    printLine(name, "joined over gaps up to 10", costJoined(variables, 10), askedFor);
    printLine(name, "joined over gaps up to 50", costJoined(variables, 50), askedFor);
    printLine(name, "best possible", costOfAreas(variables, fewest), askedFor);
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc < 2) {
        std::fprintf(stderr, "requests_per_refresh LIST...: give at least one list of variables\n");
        return 2;
    }
    std::printf("list\trule\trequests\telements read\tpercent nobody asked for\n");
    for (int i = 1; i < argc; ++i)
        printList(QString::fromLocal8Bit(argv[i]));
    return 0;
}
