// SPDX-License-Identifier: MIT
#include "runtime/cycle/refresh_plan.h"

#include "runtime/modbus/protocol.h"
#include "runtime/model/frame_format.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

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
std::vector<ReadPiece> partsInside(const Runs& runs, const Variable& variable)
{
    std::vector<ReadPiece> parts;
    auto run = std::partition_point(runs.begin(), runs.end(), [&variable](const Variable& candidate) {
        return endOf(candidate) <= variable.element;
    });
    for (; run != runs.end() && run->element < endOf(variable); ++run) {
        Variable part = variable;
        part.element = std::max(variable.element, run->element);
        part.count = std::min(endOf(variable), endOf(*run)) - part.element;
        parts.push_back({part, part});
    }
    return parts;
}

/// Variables of one group of words that overlap, by their place in the list of all.
struct Overlapping {
    std::vector<std::size_t> members;
    int begin = 0;
    int end = 0;
};

/// \param asked of all variables, as they are read
std::vector<Overlapping> overlapping(const Runs& asked)
{
    std::map<Group, std::vector<std::size_t>> groups;
    for (std::size_t index = 0; index < asked.size(); ++index) {
        if (!isBits(asked[index]))
            groups[{asked[index].station, asked[index].area}].push_back(index);
    }
    std::vector<Overlapping> clusters;
    for (auto& group : groups) {
        std::vector<std::size_t>& members = group.second;
        std::stable_sort(members.begin(), members.end(), [&asked](std::size_t a, std::size_t b) {
            return asked[a].element < asked[b].element;
        });
        bool isFirst = true;
        for (const std::size_t member : members) {
            if (isFirst || asked[member].element >= clusters.back().end)
                clusters.push_back({{}, asked[member].element, 0});
            clusters.back().members.push_back(member);
            clusters.back().end = std::max(clusters.back().end, endOf(asked[member]));
            isFirst = false;
        }
    }
    return clusters;
}

/// \return for each place between the elements of \a cluster, its begin being 0, whether it lies inside a value
std::vector<bool> insideValues(const Overlapping& cluster, const Runs& asked)
{
    std::vector<bool> inside(static_cast<std::size_t>(cluster.end - cluster.begin) + 1, false);
    for (const std::size_t member : cluster.members) {
        const Variable& variable = asked[member];
        for (int element = 0; element < variable.count; ++element) {
            if (element % variable.valueElements != 0)
                inside[static_cast<std::size_t>(variable.element + element - cluster.begin)] = true;
        }
    }
    return inside;
}

/// \return \a cluster in runs that end between values; none when there is no such place
Runs runsBetweenValues(const Overlapping& cluster, const Runs& asked, int maxBlockCount)
{
    const std::vector<bool> inside = insideValues(cluster, asked);
    Variable run = asked[cluster.members.front()];
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

bool hasWideValues(const Overlapping& cluster, const Runs& asked)
{
    return std::any_of(cluster.members.begin(), cluster.members.end(),
                       [&asked](std::size_t member) { return asked[member].valueElements > 1; });
}

/// Runs that overlapping variables are read by together.
struct SharedRuns {
    std::vector<Runs> runs;
    std::vector<std::size_t> ofVariable; ///< index into runs; of an empty one where a variable has its own
};

SharedRuns sharedRuns(const std::vector<Variable>& variables, int maxBlockCount)
{
    Runs asked;
    std::transform(variables.begin(), variables.end(), std::back_inserter(asked), wordsOf);
    SharedRuns shared;
    shared.runs.emplace_back(); // of those that have their own
    shared.ofVariable.resize(variables.size(), 0);
    for (const Overlapping& cluster : overlapping(asked)) {
        if (cluster.members.size() < 2 || !hasWideValues(cluster, asked))
            continue;
        for (const std::size_t member : cluster.members)
            shared.ofVariable[member] = shared.runs.size();
        shared.runs.push_back(runsBetweenValues(cluster, asked, maxBlockCount));
    }
    return shared;
}

/// \return the parts of a variable of words, each read by one run \param runs none: it has its own
std::vector<ReadPiece> partsOfWords(const Variable& variable, const Runs& runs, int maxBlockCount)
{
    if (runs.empty())
        return readPieces(variable, maxBlockCount);
    std::vector<ReadPiece> parts;
    for (const ReadPiece& part : partsInside(runs, wordsOf(variable)))
        parts.push_back(pieceOf(variable, part.asked));
    return parts;
}

std::vector<ReadPiece> singleElements(const Variable& variable)
{
    std::vector<ReadPiece> pieces;
    Variable single = variable;
    single.count = 1;
    for (; single.element < endOf(variable); ++single.element)
        pieces.push_back({single, single});
    return pieces;
}

} // namespace

RefreshPlan refreshPlan(const std::vector<Variable>& variables, int maxBlockCount)
{
    const std::map<Group, Runs> bits = runsOfBits(variables, maxBlockCount);
    const SharedRuns shared = sharedRuns(variables, maxBlockCount);
    RefreshPlan plan;
    for (const Runs& runs : shared.runs)
        plan.runs.insert(plan.runs.end(), runs.begin(), runs.end());
    for (const auto& group : bits)
        plan.runs.insert(plan.runs.end(), group.second.begin(), group.second.end());
    for (std::size_t index = 0; index < variables.size(); ++index) {
        const Variable& variable = variables[index];
        if (isBits(variable)) {
            plan.parts.push_back(partsInside(bits.at({variable.station, variable.area}), variable));
            continue;
        }
        const Runs& runs = shared.runs[shared.ofVariable[index]];
        plan.parts.push_back(partsOfWords(variable, runs, maxBlockCount));
        if (!runs.empty())
            continue;
        for (const ReadPiece& piece : plan.parts.back())
            plan.runs.push_back(piece.asked);
    }
    return plan;
}

RefreshPlan remoteRefreshPlan(const std::vector<Variable>& variables, int maxBlockCount)
{
    RefreshPlan plan = refreshPlan(variables, maxBlockCount);
    plan.runs.erase(std::remove_if(plan.runs.begin(), plan.runs.end(), isDoubleWords), plan.runs.end());
    std::set<std::pair<int, int>> known; // station and element
    for (std::size_t index = 0; index < variables.size(); ++index) {
        if (!isDoubleWords(variables[index]))
            continue;
        plan.parts[index] = singleElements(variables[index]);
        for (const ReadPiece& piece : plan.parts[index]) {
            if (known.insert({piece.asked.station, piece.asked.element}).second)
                plan.doubleWords.push_back(piece.asked);
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
