// SPDX-License-Identifier: MIT
// Random lists against the whole rule written down a second time. The list of the driver and the list of the
// rule must be equal; separate invariants hold whatever the rule says in detail.

#include "varlist/read_list.h"

#include "cyclic_variables.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

namespace
{

// What one random list is drawn from.
struct Recipe {
    int multiStation;
    int maxBlockCount;
    int span;         // addresses lie below it
    int largestCount; // counts lie between smallestCount and it
    int smallestCount = 0;
    std::vector<int> areas;
    std::vector<int> stations;
};

// A variable with the element that its text means; none where the text is wrong.
struct Drawn {
    HOST_VAR host;
    std::optional<long long> element;
};

using Random = std::mt19937;

int Between(Random& random, int low, int high)
{
    return low + static_cast<int>(random() % static_cast<unsigned int>(high - low + 1));
}

int OneOf(Random& random, const std::vector<int>& values)
{
    return values[random() % values.size()];
}

QString TextOf(int area, int element)
{
    if (area <= 1)
        return QString::number(element, 8);
    if (area == 7)
        return QString::number(8000 + element);
    if (area == 8)
        return QString::number(element / 16) + "." + QString::number(element % 16);
    return QString::number(area == 14 ? 200 + element : element);
}

Drawn Draw(Random& random, const Recipe& recipe, int serial)
{
    const int area = OneOf(random, recipe.areas);
    const int element = Between(random, 0, recipe.span - 1);
    const int count = Between(random, recipe.smallestCount, recipe.largestCount);
    const bool wrong = random() % 16 == 0;
    Drawn drawn;
    drawn.host = Cyclic(area, wrong ? QString("wrong") : TextOf(area, element), count,
                        OneOf(random, recipe.stations), QString("v%1").arg(serial));
    if (area > 14)
        drawn.element = 0;
    else if (!wrong)
        drawn.element = element;
    return drawn;
}

std::vector<Drawn> DrawList(Random& random, const Recipe& recipe)
{
    std::vector<Drawn> list;
    const int size = Between(random, 1, 60);
    for (int i = 0; i < size; ++i)
        list.push_back(Draw(random, recipe, i));
    return list;
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

bool IsBits(int area)
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

    long long mergeLimit(int area) const { return IsBits(area) ? 8LL * m_words : m_words; }

private:
    long long splitLimit(int area) const
    {
        const bool byBits = m_multi ? IsBits(area) : (area <= 6 || area == 8);
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

std::vector<Piece> Found()
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

std::set<Element> ElementsOf(const std::vector<Piece>& pieces)
{
    std::set<Element> elements;
    for (const Piece& piece : pieces)
        for (long long number = piece.address; number < piece.end(); ++number)
            elements.insert({piece.area, piece.station, number});
    return elements;
}

// Keys under which more than one area and station meet; their variables may be read from the wrong one.
std::set<int> SharedKeys(const Rule& rule, const std::vector<Piece>& pieces)
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

std::string Described(const std::vector<Drawn>& list)
{
    std::ostringstream out;
    for (const Drawn& drawn : list)
        out << "area " << int(drawn.host.area) << " station " << int(drawn.host.station) << " '"
            << drawn.host.address.toStdString() << "' count " << drawn.host.count << "\n";
    return out.str();
}

const std::vector<int> ALL_AREAS = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
const std::vector<int> SOME_STATIONS = {0, 1, 2, 254, 255};
const std::vector<int> BLOCK_LIMITS = {1, 2, 7, 10, 125};

class ReadListProperty : public DriverTest
{
protected:
    // Draws a list, hands it to the driver.
    void Rebuild(Random& random, const Recipe& recipe)
    {
        info.multiStation = recipe.multiStation;
        info.maxBlockCount = recipe.maxBlockCount;
        drawn = DrawList(random, recipe);
        QList<HOST_VAR> list;
        for (const Drawn& variable : drawn)
            list.append(variable.host);
        result = ReCreatReadVarList(&list);
    }

    // Calls check(rule) after each of many rebuilds, and tells the list where it failed.
    template <typename Check>
    void ForManyLists(const std::vector<Recipe>& recipes, int listsEach, Check check)
    {
        for (const Recipe& recipe : recipes) {
            for (unsigned int seed = 0; seed < static_cast<unsigned int>(listsEach); ++seed) {
                Random random(seed);
                Rebuild(random, recipe);
                SCOPED_TRACE(testing::Message() << "multiStation " << recipe.multiStation << " maxBlockCount "
                                                << recipe.maxBlockCount << " seed " << seed << "\n"
                                                << Described(drawn));
                check(Rule(recipe.multiStation, recipe.maxBlockCount));
                if (HasFailure())
                    return;
            }
        }
    }

    std::vector<Piece> AskedFor(const Rule& rule) const
    {
        std::vector<Piece> pieces;
        for (const Drawn& variable : drawn)
            for (const Piece& piece : rule.piecesOf(variable))
                pieces.push_back(piece);
        return pieces;
    }

    // Dense, middling and sparse lists, short and long variables, for every mode and limit.
    static std::vector<Recipe> Recipes(const std::vector<int>& limits, const std::vector<int>& areas)
    {
        std::vector<Recipe> recipes;
        for (int multiStation : {0, 1})
            for (int limit : limits)
                for (int span : {20, 200, 5000})
                    for (int largest : {3, 40, 300})
                        recipes.push_back({multiStation, limit, span, largest, 0, areas, SOME_STATIONS});
        return recipes;
    }

    std::vector<Drawn> drawn;
    int result = 0;
};

std::vector<int> ManyAreas()
{
    std::vector<int> areas = ALL_AREAS;
    areas.insert(areas.end(), {15, 16, 200, 255});
    return areas;
}

} // namespace

TEST_F(ReadListProperty, ReadsOfAllAreasAreThoseOfTheRule)
{
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 30,
                 [this](const Rule& rule) { EXPECT_EQ(rule.readsOf(drawn), Found()); });
}

// Few areas, so that variables meet more often.
TEST_F(ReadListProperty, ReadsOfCrowdedAreasAreThoseOfTheRule)
{
    for (const std::vector<int>& areas : {std::vector<int>{8, 9}, {6, 7}, {10, 13}, {14, 15}})
        ForManyLists(Recipes(BLOCK_LIMITS, areas), 10,
                     [this](const Rule& rule) { EXPECT_EQ(rule.readsOf(drawn), Found()); });
}

TEST_F(ReadListProperty, ReadsWithoutALimitAreThoseOfTheRule)
{
    ForManyLists(Recipes({0, -1, -125, INT_MIN, INT_MAX}, ManyAreas()), 10,
                 [this](const Rule& rule) { EXPECT_EQ(rule.readsOf(drawn), Found()); });
}

TEST_F(ReadListProperty, ReadsOfCountsBelow0AreThoseOfTheRule)
{
    for (int multiStation : {0, 1})
        for (int limit : {0, 1, 10, 125})
            ForManyLists({{multiStation, limit, 60, 20, -20, {2, 7, 8, 9, 14}, SOME_STATIONS}}, 100,
                         [this](const Rule& rule) { EXPECT_EQ(rule.readsOf(drawn), Found()); });
}

TEST_F(ReadListProperty, ReadsOfCountsAboveTheMaximumAreThoseOfTheRule)
{
    for (int multiStation : {0, 1})
        ForManyLists({{multiStation, 125, 65535, 2000000, 0, ManyAreas(), SOME_STATIONS}}, 5,
                     [this](const Rule& rule) { EXPECT_EQ(rule.readsOf(drawn), Found()); });
}

TEST_F(ReadListProperty, TheResultIsTheNumberOfReadsInMultiStationModeOnly)
{
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 5, [this](const Rule&) {
        EXPECT_EQ(info.multiStation ? PLC_driver.readList.size() : 0, result);
    });
}

TEST_F(ReadListProperty, EveryRequestedElementIsRead)
{
    const auto check = [this](const Rule& rule) {
        const std::vector<Piece> asked = AskedFor(rule);
        const std::set<int> shared = SharedKeys(rule, asked);
        const std::set<Element> read = ElementsOf(Found());
        for (const Piece& piece : asked) {
            if (shared.count(rule.keyOf(piece)))
                continue;
            for (const Element& element : ElementsOf({piece}))
                ASSERT_EQ(1u, read.count(element)) << piece << " misses " << element.number;
        }
    };
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 10, check);
    ForManyLists(Recipes({0}, ManyAreas()), 10, check);
}

// A longer read is one that nothing was merged into: somebody's own piece.
TEST_F(ReadListProperty, NoGrownBlockIsLongerThanTheLimit)
{
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 10, [this](const Rule& rule) {
        const std::vector<Piece> asked = AskedFor(rule);
        for (const Piece& block : Found()) {
            if (block.count <= rule.mergeLimit(block.area))
                continue;
            EXPECT_NE(asked.end(), std::find(asked.begin(), asked.end(), block)) << block;
        }
    });
}

TEST_F(ReadListProperty, EveryReadBeginsAtAPieceWhoseNamesItKeeps)
{
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 10, [this](const Rule& rule) {
        std::set<std::tuple<int, int, long long, QString, QString>> begins;
        for (const Piece& piece : AskedFor(rule))
            begins.insert({piece.area, piece.station, piece.address, piece.name, piece.name2});
        for (const Piece& block : Found())
            EXPECT_EQ(1u, begins.count({block.area, block.station, block.address, block.name, block.name2}))
                << block;
    });
}

TEST_F(ReadListProperty, EveryReadEndsWhereAPieceOfItsKeyEnds)
{
    ForManyLists(Recipes(BLOCK_LIMITS, ManyAreas()), 10, [this](const Rule& rule) {
        std::set<std::pair<int, long long>> ends;
        for (const Piece& piece : AskedFor(rule))
            ends.insert({rule.keyOf(piece), piece.end()});
        for (const Piece& block : Found())
            EXPECT_EQ(1u, ends.count({rule.keyOf(block), block.end()})) << block;
    });
}

TEST_F(ReadListProperty, TheSameListGivesTheSameReadsAgain)
{
    ForManyLists(Recipes({10}, ManyAreas()), 5, [this](const Rule&) {
        const std::vector<Piece> first = Found();
        QList<HOST_VAR> list;
        for (const Drawn& variable : drawn)
            list.append(variable.host);
        ReCreatReadVarList(&list);
        EXPECT_EQ(first, Found());
    });
}
