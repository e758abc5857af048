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
    RefreshPlan plan;
    for (const auto& group : bits)
        plan.runs.insert(plan.runs.end(), group.second.begin(), group.second.end());
    for (const Variable& variable : variables) {
        if (isBits(variable)) {
            plan.parts.push_back(partsInside(bits.at({variable.station, variable.area}), variable));
            continue;
        }
        plan.parts.push_back(readPieces(variable, maxBlockCount));
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
