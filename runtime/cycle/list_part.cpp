// SPDX-License-Identifier: MIT
#include "runtime/cycle/list_part.h"

#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/printable.h"

#include <QStringList>

#include <algorithm>
#include <stdexcept>
#include <tuple>

namespace plc
{

namespace
{

[[noreturn]] void fail(const QString& words)
{
    throw std::runtime_error(words.toStdString());
}

std::vector<Variable> resolved(std::vector<Variable> variables, const Settings& settings)
{
    for (Variable& variable : variables) {
        variable = withStation(variable, settings);
        const QString words = cyclicRefusal(variable, settings);
        if (!words.isEmpty())
            fail(words);
    }
    const QString words = blockRefusal(variables, settings.maxBlockCount);
    if (!words.isEmpty())
        fail(words);
    return variables;
}

/// A block, and its place among those that the driver reads.
struct PlacedBlock {
    Variable elements;
    std::size_t place = 0;
};

std::tuple<int, int, int> orderOf(const Variable& elements)
{
    return std::make_tuple(elements.station, elements.area, elements.element);
}

/// Sorted, so that they can be looked up.
std::vector<PlacedBlock> placedBlocks(const std::vector<Variable>& variables, const Settings& settings)
{
    std::vector<PlacedBlock> blocks;
    for (const DriverBlock& block : BlockPlanner(settings).blocks(variables, settings.maxBlockCount))
        blocks.push_back({elementsOf(block), blocks.size()});
    std::sort(blocks.begin(), blocks.end(), [](const PlacedBlock& a, const PlacedBlock& b) {
        return orderOf(a.elements) < orderOf(b.elements);
    });
    return blocks;
}

/// \param first what is read first for a variable
/// \return the place of the block that reads it
std::size_t placeOf(const std::vector<PlacedBlock>& blocks, const Variable& first)
{
    const auto behind = std::upper_bound(blocks.begin(), blocks.end(), first,
                                         [](const Variable& wanted, const PlacedBlock& block) {
                                             return orderOf(wanted) < orderOf(block.elements);
                                         });
    return behind == blocks.begin() ? 0 : std::prev(behind)->place;
}

} // namespace

std::optional<ListPart> parseListPart(const QString& text, QString* error)
{
    const QStringList numbers = text.split(QLatin1Char('/'));
    bool isNumber = numbers.size() == 2;
    bool isCount = isNumber;
    ListPart part;
    if (isNumber) {
        part.number = numbers.at(0).toInt(&isNumber);
        part.parts = numbers.at(1).toInt(&isCount);
    }
    if (isNumber && isCount && part.number >= 1 && part.number <= part.parts && part.parts <= mostListParts)
        return part;
    *error =
        QStringLiteral("\"%1\" is no part of a list; K/N is expected, K from 1 to N and N at most %2, for "
                       "example 1/4 for the first of four")
            .arg(excerpt(text))
            .arg(mostListParts);
    return std::nullopt;
}

std::vector<std::size_t> variablesOfPart(const ListPart& part, const std::vector<Variable>& variables,
                                         const Settings& settings)
{
    const std::vector<Variable> asked = resolved(variables, settings);
    const RefreshPlan plan = refreshPlan(asked, settings);
    const std::vector<PlacedBlock> blocks = placedBlocks(asked, settings);
    std::vector<std::size_t> chosen;
    for (std::size_t index = 0; index < asked.size(); ++index) {
        const std::size_t place = placeOf(blocks, askedBy(*plan.parts.begin(index), asked[index]));
        if (place % static_cast<std::size_t>(part.parts) == static_cast<std::size_t>(part.number - 1))
            chosen.push_back(index);
    }
    return chosen;
}

} // namespace plc
