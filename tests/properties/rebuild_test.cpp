// SPDX-License-Identifier: MIT
// Lists of cyclic variables against the whole rule written down a second time. The list of the driver and the list of
// the rule must be equal; separate properties hold whatever the rule says in detail.

#include "varlist/read_list.h"

#include "properties/property.h"
#include "varlist/cyclic_variables.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace
{

// What a list is drawn from.
struct Recipe {
    int multiStation;
    int maxBlockCount;
    int span;         // addresses lie below it
    int largestCount; // counts lie between smallestCount and it
    int smallestCount;
};

std::ostream& operator<<(std::ostream& out, const Recipe& recipe)
{
    return out << "multiStation " << recipe.multiStation << ", maxBlockCount " << recipe.maxBlockCount;
}

// A variable as it is drawn.
struct Asked {
    int area = 0;
    int element = 0;
    int count = 0;
    int station = 0;
    bool wrong = false; // its address text
};

std::ostream& operator<<(std::ostream& out, const Asked& asked)
{
    return out << "{area " << asked.area << ", element " << asked.element << ", count " << asked.count
               << ", station " << asked.station << (asked.wrong ? ", wrong text}" : "}");
}

// The same with the element that its text means; none where the text is wrong.
struct Drawn {
    HOST_VAR host;
    std::optional<long long> element;
};

QString addressText(int area, int element)
{
    if (area <= 1)
        return QString::number(element, 8);
    if (area == 7)
        return QString::number(8000 + element);
    if (area == 8)
        return QString::number(element / 16) + "." + QString::number(element % 16);
    return QString::number(area == 14 ? 200 + element : element);
}

const std::vector<int> someStations = {1, 0, 2, 254, 255};

rc::Gen<std::vector<Asked>> lists(const Recipe& recipe, const std::vector<int>& areas)
{
    return rc::gen::container<std::vector<Asked>>(rc::gen::build<Asked>(
        rc::gen::set(&Asked::area, rc::gen::elementOf(areas)),
        rc::gen::set(&Asked::element, rc::gen::inRange(0, recipe.span)),
        rc::gen::set(&Asked::count, rc::gen::inRange(recipe.smallestCount, recipe.largestCount + 1)),
        rc::gen::set(&Asked::station, rc::gen::elementOf(someStations)),
        rc::gen::set(&Asked::wrong, rc::gen::weightedElement<bool>({{15, false}, {1, true}}))));
}

Drawn drawnOf(const Asked& asked, std::size_t serial)
{
    Drawn drawn;
    drawn.host = Cyclic(asked.area, asked.wrong ? QString("wrong") : addressText(asked.area, asked.element),
                        asked.count, asked.station, QString("v%1").arg(serial));
    if (asked.area > 14)
        drawn.element = 0;
    else if (!asked.wrong)
        drawn.element = asked.element;
    return drawn;
}

// One request, as wanted or as found.
struct Piece {
    int area;
    int station;
    long long address;
    long long count;
    QString name;
    QString name2;

    long long end() const { return address + count; }
};

bool operator==(const Piece& a, const Piece& b)
{
    return a.area == b.area && a.station == b.station && a.address == b.address && a.count == b.count &&
           a.name == b.name && a.name2 == b.name2;
}

std::ostream& operator<<(std::ostream& out, const Piece& piece)
{
    return out << "{area " << piece.area << ", station " << piece.station << ", " << piece.address << " +"
               << piece.count << ", " << piece.name.toStdString() << " '" << piece.name2.toStdString()
               << "'}";
}

bool isBits(int area)
{
    return area <= 7;
}

// The rule: what a list of variables becomes.
class Rule
{
public:
    Rule(int multiStation, int maxBlockCount) : m_multi(multiStation != 0), m_words(maxBlockCount) {}

    std::vector<Piece> readsOf(const std::vector<Drawn>& variables) const
    {
        std::vector<Piece> reads;
        for (const std::vector<Piece>& group : groupsOf(variables))
            appendMerged(group, reads);
        return reads;
    }

    std::vector<Piece> piecesOf(const Drawn& variable) const
    {
        if (!variable.element || (!m_multi && variable.host.area > 14))
            return {};
        const Piece whole = wholeOf(variable); // for bits inside words it is the words that count
        if (m_multi && whole.count <= 0)
            return {};
        return cut(whole, splitLimit(variable.host.area));
    }

    // Variables of one key are merged with each other.
    int keyOf(const Piece& piece) const
    {
        if (m_multi)
            return piece.station + 255 * piece.area;
        const std::vector<int> order = {0, 1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 10, 14};
        return static_cast<int>(std::find(order.begin(), order.end(), piece.area) - order.begin());
    }

    long long mergeLimit(int area) const { return isBits(area) ? 8LL * m_words : m_words; }

private:
    long long splitLimit(int area) const
    {
        const bool byBits = m_multi ? isBits(area) : (area <= 6 || area == 8);
        return byBits ? 8LL * m_words : m_words;
    }

    // The variable in one piece, with bits inside words turned into words.
    Piece wholeOf(const Drawn& variable) const
    {
        const HOST_VAR& host = variable.host;
        Piece whole = {host.area,         m_multi ? int(host.station) : int(DEFAULT_STATION),
                       *variable.element, host.count,
                       host.name,         host.address};
        const std::map<int, long long> servable = {{8, 16 * 65535LL}, {14, 65536}};
        const auto most = servable.find(host.area);
        whole.count = std::min(whole.count, most == servable.end() ? 65535 : most->second);
        if (host.area != 8)
            return whole;
        const double bits = static_cast<double>(whole.address % 16 + whole.count);
        whole.area = 9;
        whole.address /= 16;
        whole.count = static_cast<long long>(std::ceil(bits / 16));
        return whole;
    }

    static std::vector<Piece> cut(Piece rest, long long limit)
    {
        std::vector<Piece> pieces;
        while (limit > 0 && rest.count > limit) {
            pieces.push_back(rest);
            pieces.back().count = limit;
            rest.address += limit;
            rest.count -= limit;
        }
        pieces.push_back(rest);
        return pieces;
    }

    std::vector<std::vector<Piece>> groupsOf(const std::vector<Drawn>& variables) const
    {
        std::map<int, std::size_t> placeOfKey;
        std::map<std::size_t, std::vector<Piece>> groups;
        for (const Drawn& variable : variables)
            for (const Piece& piece : piecesOf(variable)) {
                const int key = keyOf(piece);
                const std::size_t place = m_multi ? placeOfKey.emplace(key, placeOfKey.size()).first->second
                                                  : static_cast<std::size_t>(key);
                groups[place].push_back(piece);
            }
        std::vector<std::vector<Piece>> ordered;
        for (auto& group : groups)
            ordered.push_back(sorted(std::move(group.second)));
        return ordered;
    }

    std::vector<Piece> sorted(std::vector<Piece> group) const
    {
        if (m_multi) // the newest comes first among equals
            std::reverse(group.begin(), group.end());
        std::multimap<long long, Piece> byAddress; // equals keep their order
        for (const Piece& piece : group)
            byAddress.emplace(piece.address, piece);
        group.clear();
        for (const auto& entry : byAddress)
            group.push_back(entry.second);
        return group;
    }

    // Each turn takes one block off the front of the group.
    void appendMerged(const std::vector<Piece>& group, std::vector<Piece>& reads) const
    {
        const long long limit = mergeLimit(group.front().area);
        auto next = group.begin();
        while (next != group.end()) {
            Piece read = *next++;
            for (; next != group.end() && joins(*next, read, limit); ++next)
                if (!liesInside(*next, read))
                    read.count = next->end() - read.address;
            reads.push_back(read);
        }
    }

    static bool liesInside(const Piece& piece, const Piece& read)
    {
        return piece.address < read.end() && piece.end() <= read.end();
    }

    static bool joins(const Piece& piece, const Piece& read, long long limit)
    {
        return liesInside(piece, read) || (limit > 0 && piece.end() - read.address <= limit);
    }

    bool m_multi;
    long long m_words;
};

std::vector<Piece> piecesFound()
{
    std::vector<Piece> found;
    for (const RW_VAR& var : PLC_driver.readList)
        found.push_back({var.area, var.station, var.address, var.count, var.name, var.name2});
    return found;
}

struct Element {
    int area;
    int station;
    long long number;

    bool operator<(const Element& other) const
    {
        return std::tie(area, station, number) < std::tie(other.area, other.station, other.number);
    }
};

std::set<Element> elementsOf(const std::vector<Piece>& pieces)
{
    std::set<Element> elements;
    for (const Piece& piece : pieces)
        for (long long number = piece.address; number < piece.end(); ++number)
            elements.insert({piece.area, piece.station, number});
    return elements;
}

// Keys under which more than one area and station meet; their variables may be read from the wrong one.
std::set<int> sharedKeys(const Rule& rule, const std::vector<Piece>& pieces)
{
    std::map<int, std::set<std::pair<int, int>>> owners;
    for (const Piece& piece : pieces)
        owners[rule.keyOf(piece)].insert({piece.area, piece.station});
    std::set<int> shared;
    for (const auto& owner : owners)
        if (owner.second.size() > 1)
            shared.insert(owner.first);
    return shared;
}

const std::vector<int> allAreas = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
const std::vector<int> blockLimits = {1, 2, 7, 10, 125};
const int casesDrawn = 300;

std::vector<int> manyAreas()
{
    std::vector<int> areas = allAreas;
    areas.insert(areas.end(), {15, 16, 200, 255});
    return areas;
}

// Dense, middling and sparse lists, short and long variables, for every mode and limit.
Recipe anyRecipe(const std::vector<int>& limits)
{
    return {*rc::gen::element(0, 1), *rc::gen::elementOf(limits), *rc::gen::element(20, 200, 5000),
            *rc::gen::element(3, 40, 300), 0};
}

class Rebuild : public DriverTest
{
protected:
    // Hands a list to the driver.
    Rule rebuild(const Recipe& recipe, const std::vector<int>& areas)
    {
        RC_LOG() << recipe << std::endl;
        info.multiStation = recipe.multiStation;
        info.maxBlockCount = recipe.maxBlockCount;
        drawn.clear();
        list.clear();
        for (const Asked& asked : *lists(recipe, areas)) {
            drawn.push_back(drawnOf(asked, drawn.size()));
            list.append(drawn.back().host);
        }
        result = ReCreatReadVarList(&list);
        return Rule(recipe.multiStation, recipe.maxBlockCount);
    }

    std::vector<Piece> askedFor(const Rule& rule) const
    {
        std::vector<Piece> pieces;
        for (const Drawn& variable : drawn)
            for (const Piece& piece : rule.piecesOf(variable))
                pieces.push_back(piece);
        return pieces;
    }

    // The reads are those of the rule, for lists of these areas.
    void readsAreThoseOfTheRule(int cases, const std::vector<int>& limits, const std::vector<int>& areas)
    {
        test::holds(cases, [&] {
            const Rule rule = rebuild(anyRecipe(limits), areas);
            RC_ASSERT(rule.readsOf(drawn) == piecesFound());
        });
    }

    // The same for counts of any size.
    void readsOfCountsAreThoseOfTheRule(int cases, const std::vector<int>& limits, Recipe recipe,
                                        const std::vector<int>& areas)
    {
        test::holds(cases, [&] {
            recipe.multiStation = *rc::gen::element(0, 1);
            recipe.maxBlockCount = *rc::gen::elementOf(limits);
            const Rule rule = rebuild(recipe, areas);
            RC_ASSERT(rule.readsOf(drawn) == piecesFound());
        });
    }

    // What holds after any rebuild, whatever the rule says in detail.
    void always(const std::vector<int>& limits, const std::function<void(const Rule& rule)>& check)
    {
        test::holds(casesDrawn / 2, [&] { check(rebuild(anyRecipe(limits), manyAreas())); });
    }

    QList<HOST_VAR> list;
    std::vector<Drawn> drawn;
    int result = 0;
};

} // namespace

TEST_F(Rebuild, ReadsOfAllAreasAreThoseOfTheRule)
{
    readsAreThoseOfTheRule(4 * casesDrawn, blockLimits, manyAreas());
}

// Few areas, so that variables meet more often.
TEST_F(Rebuild, ReadsOfCrowdedAreasAreThoseOfTheRule)
{
    for (const std::vector<int>& areas : {std::vector<int>{8, 9}, {6, 7}, {10, 13}, {14, 15}})
        readsAreThoseOfTheRule(casesDrawn, blockLimits, areas);
}

TEST_F(Rebuild, ReadsWithoutALimitAreThoseOfTheRule)
{
    readsAreThoseOfTheRule(casesDrawn, {0, -1, -125, INT_MIN, INT_MAX}, manyAreas());
}

TEST_F(Rebuild, ReadsOfCountsBelow0AreThoseOfTheRule)
{
    readsOfCountsAreThoseOfTheRule(casesDrawn, {0, 1, 10, 125}, {0, 0, 60, 20, -20}, {2, 7, 8, 9, 14});
}

TEST_F(Rebuild, ReadsOfCountsAboveTheMaximumAreThoseOfTheRule)
{
    readsOfCountsAreThoseOfTheRule(8, {125}, {0, 0, 65535, 2000000, 0}, manyAreas());
}

TEST_F(Rebuild, TheResultIsTheNumberOfReadsInMultiStationModeOnly)
{
    always(blockLimits, [this](const Rule&) {
        RC_ASSERT(result == (info.multiStation ? PLC_driver.readList.size() : 0));
    });
}

TEST_F(Rebuild, EveryRequestedElementIsRead)
{
    always({0, 1, 7, 125}, [this](const Rule& rule) {
        const std::vector<Piece> asked = askedFor(rule);
        const std::set<int> shared = sharedKeys(rule, asked);
        const std::set<Element> read = elementsOf(piecesFound());
        for (const Piece& piece : asked)
            for (const Element& element : elementsOf({piece}))
                RC_ASSERT(shared.count(rule.keyOf(piece)) || read.count(element));
    });
}

// A longer read is one that nothing was merged into: somebody's own piece.
TEST_F(Rebuild, MakesNoGrownBlockLongerThanTheLimit)
{
    always(blockLimits, [this](const Rule& rule) {
        const std::vector<Piece> asked = askedFor(rule);
        for (const Piece& block : piecesFound())
            if (block.count > rule.mergeLimit(block.area))
                RC_ASSERT(std::find(asked.begin(), asked.end(), block) != asked.end());
    });
}

TEST_F(Rebuild, BeginsEveryReadAtAPieceWhoseNamesItKeeps)
{
    always(blockLimits, [this](const Rule& rule) {
        std::set<std::tuple<int, int, long long, QString, QString>> begins;
        for (const Piece& piece : askedFor(rule))
            begins.insert({piece.area, piece.station, piece.address, piece.name, piece.name2});
        for (const Piece& block : piecesFound())
            RC_ASSERT(begins.count({block.area, block.station, block.address, block.name, block.name2}) ==
                      1u);
    });
}

TEST_F(Rebuild, EndsEveryReadWhereAPieceOfItsKeyEnds)
{
    always(blockLimits, [this](const Rule& rule) {
        std::set<std::pair<int, long long>> ends;
        for (const Piece& piece : askedFor(rule))
            ends.insert({rule.keyOf(piece), piece.end()});
        for (const Piece& block : piecesFound())
            RC_ASSERT(ends.count({rule.keyOf(block), block.end()}) == 1u);
    });
}

TEST_F(Rebuild, OfTheSameListGivesTheSameReadsAgain)
{
    always({10}, [this](const Rule&) {
        const std::vector<Piece> first = piecesFound();
        ReCreatReadVarList(&list);
        RC_ASSERT(first == piecesFound());
    });
}
