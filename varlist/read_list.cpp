// SPDX-License-Identifier: MIT
#include "varlist/read_list.h"

#include "frames/address_map.h"
#include "image/element_run.h"
#include "varlist/address_text.h"
#include "varlist/block_limit.h"
#include "varlist/pieces.h"

#include <QMap>

#include <algorithm>
#include <new>
#include <vector>

namespace
{

// Single-station mode: the list that an area's variables are gathered in, which is also the order of the
// rebuilt requests, and whether they are split by the limit of bits. Area 10 comes after 13. Area 7 is split
// by words and merged by bits, area 8 the other way round. All on purpose.
struct Gathering {
    int list;
    bool splitByBits;
};

const Gathering gatherings[PLC_AREA_COUNT] = {
    {0, true},   // 0
    {1, true},   // 1
    {2, true},   // 2
    {3, true},   // 3
    {4, true},   // 4
    {5, true},   // 5
    {6, true},   // 6
    {7, false},  // 7
    {8, true},   // 8
    {8, false},  // 9
    {12, false}, // 10
    {9, false},  // 11
    {10, false}, // 12
    {11, false}, // 13
    {13, false}, // 14
};
const int AREA_LISTS = 14;
const int FIRST_WORD_LIST = 8;

// Multi-station mode: entries of one station and area share a key. The factor is 255, not 256, so station 255
// shares its key with station 0 of the next area; on purpose.
const int KEY_FACTOR = 255;

RW_VAR RequestTemplate()
{
    RW_VAR var = RW_VAR();
    var.hostSubKey = -1;
    var.spare3 = PLC_driver.comInfo->remoteMode;
    var.stationGroup = PLC_driver.comInfo->localStation;
    return var;
}

// Fills the template in for variable i but its texts, in place of which result says which variable it is;
// bits inside words become the words that they span. \return false when the address text names no element
bool Describe(const QList<HOST_VAR>& variables, int i, RW_VAR& var)
{
    const HOST_VAR& variable = variables.at(i);
    const int element = StringAddressToInt(variable.area, variable.address);
    if (element < 0)
        return false;
    var.result = i;
    var.area = variable.area;
    var.address = element;
    var.count = ServableCount(variable.area, variable.count, COUNT_OF_READ);
    if (var.area == AREA_BIT_OF_WORD) {
        var.area = AREA_WORD;
        var.address = element / PLC_WORD_BITS;
        var.count = WordsOfBits(element, var.count);
    }
    return true;
}

void RebuildSingleStation(const QList<HOST_VAR>& variables) PLC_REQUIRES(PLC_driver.listMutex)
{
    QList<RW_VAR> areaLists[AREA_LISTS];
    RW_VAR var = RequestTemplate();
    var.station = PLC_driver.comInfo->defaultStation;
    for (int i = 0; i < variables.size(); ++i) {
        const HOST_VAR& variable = variables.at(i);
        if (!FindArea(variable.area) || !Describe(variables, i, var))
            continue;
        const Gathering& gathering = gatherings[variable.area];
        const int limit = gathering.splitByBits ? BitLimit() : WordLimit();
        WhetherGroup(var.count, limit, &var, &areaLists[gathering.list]);
    }
    int size = 0;
    for (int list = 0; list < AREA_LISTS; ++list) {
        Bubble_Sort(&areaLists[list]);
        size = WordVarReCreat(&areaLists[list], list < FIRST_WORD_LIST ? BitLimit() : WordLimit(), size);
    }
}

// The pieces of all variables by key, and the keys in order of first appearance.
struct Chunks {
    QMap<int, QList<RW_VAR>> chunkMap; // the newest entry of a key comes first
    QList<int> keyOrder;

    void insert(int groupKey, const RW_VAR& var)
    {
        QList<RW_VAR>& entries = chunkMap[groupKey];
        if (entries.isEmpty())
            keyOrder.append(groupKey);
        entries.prepend(var);
    }
};

// Counts of 0 or below make no piece; of bits inside words it is the words they span that count.
void InsertPieces(Chunks& chunks, RW_VAR& var)
{
    const int start = var.address;
    const Pieces pieces = CutIntoPieces(var.count, BlockLimit(var.area));
    for (int i = 0; i < pieces.number; ++i) {
        var.address = pieces.begin(start, i);
        var.count = pieces.count(i);
        chunks.insert(var.station + KEY_FACTOR * var.area, var);
    }
}

int RebuildMultiStation(const QList<HOST_VAR>& variables) PLC_REQUIRES(PLC_driver.listMutex)
{
    Chunks chunks;
    RW_VAR var = RequestTemplate();
    for (int i = 0; i < variables.size(); ++i) {
        const HOST_VAR& variable = variables.at(i);
        var.station = variable.station;
        if (Describe(variables, i, var))
            InsertPieces(chunks, var);
    }
    int size = 0;
    for (int i = 0; i < chunks.keyOrder.size(); ++i) {
        QList<RW_VAR>& list = chunks.chunkMap[chunks.keyOrder.at(i)];
        Bubble_Sort(&list);
        size = WordVarReCreat(&list, BlockLimit(list.at(0).area), size);
    }
    return size;
}

// Only the requests that came out carry texts: counting references for every variable, all over the memory,
// took longer than sorting.
void AddTexts(const QList<HOST_VAR>& variables) PLC_REQUIRES(PLC_driver.listMutex)
{
    for (int i = 0; i < PLC_driver.readList.size(); ++i) {
        RW_VAR& request = PLC_driver.readList[i];
        const HOST_VAR& variable = variables.at(request.result);
        request.name = variable.name;
        request.name2 = variable.address;
        request.result = 0;
    }
}

// \return what ReCreatReadVarList() returns
int Rebuild(const QList<HOST_VAR>& variables) PLC_REQUIRES(PLC_driver.listMutex)
{
    PLC_driver.readList.clear();
    if (variables.isEmpty())
        return 0;
    PLC_driver.comInfo->cycleDone = 0;
    PLC_driver.readReplyCount = 0;
    int size = 0;
    if (PLC_driver.comInfo->multiStation != 0)
        size = RebuildMultiStation(variables);
    else
        RebuildSingleStation(variables);
    AddTexts(variables);
    return size;
}

// The block that merging has open.
struct Block {
    long long start;
    long long length;

    explicit Block(const RW_VAR& var) : start(var.address), length(var.count) {}

    bool contains(const RW_VAR& var) const
    {
        const long long end = start + length;
        return var.address < end && static_cast<long long>(var.address) + var.count <= end;
    }

    long long lengthWith(const RW_VAR& var) const
    {
        return static_cast<long long>(var.address) + var.count - start;
    }
};

// AddListReadVar() keeps exceptions to itself, but merging must not go on without the block that it opens.
void AppendBlock(RW_VAR& var) PLC_REQUIRES(PLC_driver.listMutex)
{
    const int before = PLC_driver.readList.size();
    if (AddListReadVar(&var) == before)
        throw std::bad_alloc();
}

// Where each entry of a list belongs once it is sorted.
struct Place {
    int address;
    int index;

    bool operator<(const Place& other) const
    {
        return address != other.address ? address < other.address : index < other.index;
    }
};

std::vector<Place> PlacesOf(const QList<RW_VAR>& list)
{
    std::vector<Place> places(static_cast<std::size_t>(list.size()));
    for (int i = 0; i < list.size(); ++i) {
        places[static_cast<std::size_t>(i)].address = list.at(i).address;
        places[static_cast<std::size_t>(i)].index = i;
    }
    return places;
}

// Qt renamed the exchange of two slots.
void SwapSlots(QList<RW_VAR>& list, int a, int b)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 13, 0)
    list.swapItemsAt(a, b);
#else
    list.swap(a, b);
#endif
}

// Brings the slots into the order of the places, one cycle of the permutation after the other.
void ExchangeSlots(QList<RW_VAR>& list, std::vector<Place>& places)
{
    for (std::size_t first = 0; first < places.size(); ++first) {
        std::size_t hole = first;
        for (;;) {
            const std::size_t from = static_cast<std::size_t>(places[hole].index);
            places[hole].index = static_cast<int>(hole); // done
            if (from == first)
                break;
            SwapSlots(list, static_cast<int>(hole), static_cast<int>(from));
            hole = from;
        }
    }
}

} // namespace

int ReCreatReadVarList(QList<HOST_VAR>* list)
{
    if (!PLC_driver.comInfo || !list)
        return 0;
    MutexHolder lock(PLC_driver.listMutex);
    try {
        return Rebuild(*list);
    } catch (...) {
        PLC_driver.readList.clear(); // the scheduler never sees a half-built list
        return 0;
    }
}

void WhetherGroup(int count, int max, RW_VAR* var, QList<RW_VAR>* list)
{
    if (count <= max || max < 1) {
        list->append(*var);
        return;
    }
    const int start = var->address;
    const Pieces pieces = CutIntoPieces(count, max);
    for (int i = 0; i < pieces.number; ++i) {
        var->address = pieces.begin(start, i);
        var->count = pieces.count(i);
        list->append(*var);
    }
}

void Bubble_Sort(QList<RW_VAR>* list)
{
    if (list->size() < 2)
        return;
    std::vector<Place> places = PlacesOf(*list);
    if (std::is_sorted(places.begin(), places.end()))
        return;
    std::sort(places.begin(), places.end());
    ExchangeSlots(*list, places);
}

int WordVarReCreat(QList<RW_VAR>* list, int maxLen, int index)
{
    int size = index;
    Block block((RW_VAR()));
    for (int i = 0; i < list->size(); ++i) {
        RW_VAR& var = (*list)[i];
        if (i > 0 && block.contains(var))
            continue;
        const long long grown = block.lengthWith(var);
        if (i > 0 && maxLen > 0 && grown <= maxLen) {
            block.length = grown;
            PLC_driver.readList[size - 1].count = static_cast<int>(grown);
            continue;
        }
        AppendBlock(var);
        ++size;
        block = Block(var);
    }
    return size;
}
