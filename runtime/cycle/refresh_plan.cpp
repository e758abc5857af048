// SPDX-License-Identifier: MIT
#include "runtime/cycle/refresh_plan.h"

#include "runtime/modbus/protocol.h"
#include "runtime/model/frame_format.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace plc
{

namespace
{

// A block of double words counts one more than it reads, two registers each.
const int mostWithDoubleWords = mostRegistersRead / 2 + 1;

// Bits behind a block that the driver overwrites with padding.
const int paddingBits = 2;

using Group = std::pair<int, int>; // station and area
using Runs = std::vector<Variable>;

bool isBits(const Variable& variable)
{
    return kindOf(variable.area) == ElementKind::Bit;
}

bool isDoubleWords(const Variable& variable)
{
    return kindOf(variable.area) == ElementKind::DoubleWord;
}

/// Runs of bits with more than padding between them, each covering whole variables.
Runs clusters(Runs bits)
{
    std::sort(bits.begin(), bits.end(),
              [](const Variable& a, const Variable& b) { return a.element < b.element; });
    Runs clusters;
    for (const Variable& variable : bits) {
        if (clusters.empty() || variable.element >= endOf(clusters.back()) + paddingBits)
            clusters.push_back(variable);
        Variable& last = clusters.back();
        last.count = std::max(endOf(last), endOf(variable)) - last.element;
    }
    return clusters;
}

/// \return the elements that no block splits of an area that is cut like words: a divisor or a multiple of
/// eight
int wholeWhenCutLikeWords(int maxBlockCount)
{
    int most = maxBlockCount < bitsOfByte ? 1 : maxBlockCount - maxBlockCount % bitsOfByte;
    while (most * 2 <= maxBlockCount && most < bitsOfByte)
        most *= 2;
    return most;
}

Variable fromWholeByte(Variable bits)
{
    const int before = bits.element % bitsOfByte;
    bits.element -= before;
    bits.count += before;
    return bits;
}

/// A block of such an area may end behind any piece of a long run. Where all runs begin and all pieces end at
/// whole bytes, so does the block, and it has no padding.
Runs runsCutLikeWords(const Runs& bits, int maxBlockCount)
{
    const int most = wholeWhenCutLikeWords(maxBlockCount);
    const Runs whole = clusters(bits);
    if (std::all_of(whole.begin(), whole.end(), [most](const Variable& run) { return run.count <= most; }))
        return whole;
    Runs aligned;
    std::transform(bits.begin(), bits.end(), std::back_inserter(aligned), fromWholeByte);
    Runs runs;
    for (const Variable& cluster : clusters(aligned)) {
        const Runs pieces = cut(cluster, most);
        runs.insert(runs.end(), pieces.begin(), pieces.end());
    }
    return runs;
}

Runs runsOfArea(const Runs& bits, int maxBlockCount)
{
    Runs runs;
    for (const Variable& cluster : clusters(bits)) {
        for (const ReadPiece& piece : readPieces(cluster, maxBlockCount))
            runs.push_back(piece.asked);
    }
    return runs;
}

std::map<Group, Runs> runsOfBits(const std::vector<Variable>& variables, int maxBlockCount)
{
    std::map<Group, Runs> groups;
    for (const Variable& variable : variables) {
        if (isBits(variable))
            groups[{variable.station, variable.area}].push_back(variable);
    }
    for (auto& group : groups)
        group.second = areaOf(group.first.second).cut == BitCut::LikeWords
                           ? runsCutLikeWords(group.second, maxBlockCount)
                           : runsOfArea(group.second, maxBlockCount);
    return groups;
}

/// \param runs sorted, apart from each other
/// \param variable of the same area
std::vector<PlannedPart> partsInside(const Runs& runs, const Variable& variable)
{
    std::vector<PlannedPart> parts;
    auto run = std::partition_point(runs.begin(), runs.end(), [&variable](const Variable& candidate) {
        return endOf(candidate) <= variable.element;
    });
    for (; run != runs.end() && run->element < endOf(variable); ++run) {
        const int element = std::max(variable.element, run->element);
        parts.push_back({element, std::min(endOf(variable), endOf(*run)) - element});
    }
    return parts;
}

using Order = std::vector<quint32>; // places in the list of all variables

bool isSameGroup(const Variable& a, const Variable& b)
{
    return a.station == b.station && a.area == b.area;
}

/// \return the variables of words by station, area and what is read of them
Order orderOfWords(const std::vector<Variable>& variables)
{
    Order order;
    order.reserve(variables.size());
    for (std::size_t index = 0; index < variables.size(); ++index) {
        if (!isBits(variables[index]))
            order.push_back(static_cast<quint32>(index));
    }
    std::sort(order.begin(), order.end(), [&variables](quint32 a, quint32 b) {
        const Variable left = wordsOf(variables[a]);
        const Variable right = wordsOf(variables[b]);
        return std::tie(left.station, left.area, left.element, left.count, a) <
               std::tie(right.station, right.area, right.element, right.count, b);
    });
    return order;
}

/// Variables of one group of words that overlap: their part of the order.
struct Overlapping {
    Order::const_iterator first;
    Order::const_iterator behind;
    int begin = 0;
    int end = 0;
};

/// \return those that begin at \a first in the order that ends at \a last
Overlapping overlappingFrom(Order::const_iterator first, Order::const_iterator last,
                            const std::vector<Variable>& variables)
{
    const Variable group = wordsOf(variables[*first]);
    Overlapping cluster = {first, first + 1, group.element, endOf(group)};
    for (; cluster.behind != last; ++cluster.behind) {
        const Variable next = wordsOf(variables[*cluster.behind]);
        if (!isSameGroup(next, group) || next.element >= cluster.end)
            break;
        cluster.end = std::max(cluster.end, endOf(next));
    }
    return cluster;
}

/// \return for each place between the elements of \a cluster, its begin being 0, whether it lies inside a value
std::vector<bool> insideValues(const Overlapping& cluster, const std::vector<Variable>& variables)
{
    std::vector<bool> inside(static_cast<std::size_t>(cluster.end - cluster.begin) + 1, false);
    for (auto member = cluster.first; member != cluster.behind; ++member) {
        const Variable variable = wordsOf(variables[*member]);
        for (int element = 0; element < variable.count; ++element) {
            if (element % variable.valueElements != 0)
                inside[static_cast<std::size_t>(variable.element + element - cluster.begin)] = true;
        }
    }
    return inside;
}

/// \return \a cluster in runs that end between values; none when there is no such place
Runs runsBetweenValues(const Overlapping& cluster, const std::vector<Variable>& variables, int maxBlockCount)
{
    const std::vector<bool> inside = insideValues(cluster, variables);
    Variable run = wordsOf(variables[*cluster.first]);
    run.valueElements = 1;
    const int most = mostElementsRead(run.area, maxBlockCount);
    Runs runs;
    for (run.element = cluster.begin; run.element < cluster.end; run.element = endOf(run)) {
        run.count = std::min(most, cluster.end - run.element);
        while (run.count > 0 && inside[static_cast<std::size_t>(endOf(run) - cluster.begin)])
            --run.count;
        if (run.count == 0)
            return {};
        runs.push_back(run);
    }
    return runs;
}

bool hasWideValues(const Overlapping& cluster, const std::vector<Variable>& variables)
{
    return std::any_of(cluster.first, cluster.behind,
                       [&variables](quint32 member) { return wordsOf(variables[member]).valueElements > 1; });
}

/// How the words of all variables are read.
struct WordRuns {
    std::vector<Runs> shared;        // by variables that overlap; the first: none
    std::vector<quint32> ofVariable; // place in shared; 0 where a variable has runs of its own
    std::vector<bool> isRepeated;    // another variable asks for the very same, and has been there before
};

/// The driver would leave out what it is handed twice, after it had made a record of each.
void markRepeated(const Order& order, const std::vector<Variable>& variables, std::vector<bool>* isRepeated)
{
    for (std::size_t place = 1; place < order.size(); ++place) {
        const Variable before = wordsOf(variables[order[place - 1]]);
        const Variable own = wordsOf(variables[order[place]]);
        (*isRepeated)[order[place]] = isSameGroup(own, before) && own.element == before.element &&
                                      own.count == before.count && own.valueElements == before.valueElements;
    }
}

WordRuns wordRuns(const std::vector<Variable>& variables, int maxBlockCount)
{
    WordRuns words;
    words.shared.emplace_back();
    words.ofVariable.resize(variables.size(), 0);
    words.isRepeated.resize(variables.size(), false);
    const Order order = orderOfWords(variables);
    markRepeated(order, variables, &words.isRepeated);
    for (auto first = order.begin(); first != order.end();) {
        const Overlapping cluster = overlappingFrom(first, order.end(), variables);
        first = cluster.behind;
        if (cluster.behind - cluster.first < 2 || !hasWideValues(cluster, variables))
            continue;
        for (auto member = cluster.first; member != cluster.behind; ++member)
            words.ofVariable[*member] = static_cast<quint32>(words.shared.size());
        words.shared.push_back(runsBetweenValues(cluster, variables, maxBlockCount));
    }
    return words;
}

std::vector<PlannedPart> ownParts(const Variable& variable, int maxBlockCount)
{
    std::vector<PlannedPart> parts;
    for (const ReadPiece& piece : readPieces(variable, maxBlockCount))
        parts.push_back({piece.asked.element, piece.asked.count});
    return parts;
}

std::vector<PlannedPart> singleElements(const Variable& variable)
{
    std::vector<PlannedPart> parts;
    for (int element = variable.element; element < endOf(variable); ++element)
        parts.push_back({element, 1});
    return parts;
}

/// Adds the parts of a variable of words, and the runs that it has for itself.
void addWords(const Variable& variable, const Runs& shared, bool isRepeated, int maxBlockCount,
              RefreshPlan* plan)
{
    const bool hasOwnRuns = shared.empty();
    const std::vector<PlannedPart> parts =
        hasOwnRuns ? ownParts(variable, maxBlockCount) : partsInside(shared, wordsOf(variable));
    plan->parts.add(parts);
    for (const PlannedPart& part : parts) {
        if (hasOwnRuns && !isRepeated)
            plan->runs.push_back(askedBy(part, variable));
    }
}

} // namespace

void PlannedParts::reserve(std::size_t variables)
{
    m_parts.reserve(variables);
    m_ends.reserve(variables);
}

void PlannedParts::add(const std::vector<PlannedPart>& parts)
{
    m_parts.insert(m_parts.end(), parts.begin(), parts.end());
    m_ends.push_back(static_cast<quint32>(m_parts.size()));
}

Variable askedBy(const PlannedPart& part, const Variable& variable)
{
    Variable asked = wordsOf(variable);
    asked.element = part.element;
    asked.count = part.count;
    return asked;
}

RefreshPlan refreshPlan(const std::vector<Variable>& variables, int maxBlockCount)
{
    const std::map<Group, Runs> bits = runsOfBits(variables, maxBlockCount);
    const WordRuns words = wordRuns(variables, maxBlockCount);
    RefreshPlan plan;
    plan.parts.reserve(variables.size());
    for (const Runs& runs : words.shared)
        plan.runs.insert(plan.runs.end(), runs.begin(), runs.end());
    for (const auto& group : bits)
        plan.runs.insert(plan.runs.end(), group.second.begin(), group.second.end());
    for (std::size_t index = 0; index < variables.size(); ++index) {
        const Variable& variable = variables[index];
        if (isBits(variable))
            plan.parts.add(partsInside(bits.at({variable.station, variable.area}), variable));
        else
            addWords(variable, words.shared[words.ofVariable[index]], words.isRepeated[index], maxBlockCount,
                     &plan);
    }
    return plan;
}

RefreshPlan remoteRefreshPlan(const std::vector<Variable>& variables, int maxBlockCount)
{
    RefreshPlan plan = refreshPlan(variables, maxBlockCount);
    plan.runs.erase(std::remove_if(plan.runs.begin(), plan.runs.end(), isDoubleWords), plan.runs.end());
    const PlannedParts inBlocks = std::exchange(plan.parts, PlannedParts());
    std::set<std::pair<int, int>> known; // station and element
    for (std::size_t index = 0; index < variables.size(); ++index) {
        const Variable& variable = variables[index];
        if (!isDoubleWords(variable)) {
            plan.parts.add({inBlocks.begin(index), inBlocks.end(index)});
            continue;
        }
        const std::vector<PlannedPart> parts = singleElements(variable);
        plan.parts.add(parts);
        for (const PlannedPart& part : parts) {
            if (known.insert({variable.station, part.element}).second)
                plan.doubleWords.push_back(askedBy(part, variable));
        }
    }
    return plan;
}

RefreshPlan refreshPlan(const std::vector<Variable>& variables, const Settings& settings)
{
    if (frameFormatOf(settings) == FrameFormat::Remote)
        return remoteRefreshPlan(variables, settings.maxBlockCount);
    return refreshPlan(variables, settings.maxBlockCount);
}

int blockCountFor(const std::vector<Variable>& variables)
{
    const bool doubleWords = std::any_of(variables.begin(), variables.end(), isDoubleWords);
    return doubleWords ? mostWithDoubleWords : mostRegistersRead;
}

QString blockRefusal(const std::vector<Variable>& variables, int maxBlockCount)
{
    const int most = blockCountFor(variables);
    if (maxBlockCount <= most)
        return QString();
    return QStringLiteral(
               "blocks of %1 words would read more than the %2 registers that Modbus allows at once%3; "
               "at most %4 fit")
        .arg(maxBlockCount)
        .arg(mostRegistersRead)
        .arg(most == mostRegistersRead ? QString()
                                       : QStringLiteral(", because area 14 has two registers an element"))
        .arg(most);
}

} // namespace plc
