// SPDX-License-Identifier: MIT
#include "soak/soak_variable.h"

namespace soak
{

namespace
{

struct Place {
    int area;
    int element;
    int count;
    bool isWritten;
};

// None overlaps another in the controller, although its areas do. A bit is written alone: a run of them goes
// out as so many requests.
const Place places[] = {
    {1, 10, 1, true},     {1, 11, 1, true},     {1, 12, 1, true},     {2, 30, 1, true},
    {3, 5, 1, true},      {7, 40, 1, true},     {8, 9600, 1, true},   {8, 9603, 1, true},
    {8, 9615, 1, true},   {9, 100, 1, true},    {9, 101, 1, true},    {9, 102, 1, true},
    {9, 150, 1, true},    {9, 200, 5, true},    {9, 205, 5, true},    {9, 215, 2, true},
    {9, 300, 60, true},   {10, 20, 3, true},    {10, 23, 3, true},    {11, 50, 4, true},
    {12, 7, 1, true},     {12, 8, 2, true},     {13, 3, 6, true},     {14, 0, 1, true},
    {14, 1, 1, true},     {14, 10, 4, true},    {14, 200, 20, true},  {0, 8, 20, false},
    {2, 1000, 20, false}, {2, 1200, 20, false}, {9, 1000, 20, false}, {9, 1200, 20, false},
    {14, 300, 9, false},  {14, 320, 9, false},
};

// A lone word has six bits for its tag.
const quint32 mostLoneWords = 63;
const quint32 loneWordTagShift = 10;
const quint32 doubleWordTagShift = 20;
const quint32 serialsOfDoubleWord = 0xFFFFF;

quint32 bitOf(quint32 tag, quint32 index, quint32 serial)
{
    // A multiplication mixes upwards, so it is an upper bit that differs from tag to tag.
    const quint32 mixed = (tag * 40503u + index * 2654435761u) >> 16;
    return (mixed + serial) & 1u;
}

bool isLoneWord(const plc::Variable& where)
{
    return plc::kindOf(where.area) == plc::ElementKind::Word && where.count == 1;
}

quint32 wordOf(const SoakVariable& variable, quint32 index, quint32 serial)
{
    if (isLoneWord(variable.where))
        return (variable.tag << loneWordTagShift | serial % 1024u) & 0xFFFFu;
    return (variable.tag * 4099u + index * 257u + serial) & 0xFFFFu;
}

quint32 valueOf(const SoakVariable& variable, quint32 index, quint32 serial)
{
    switch (plc::kindOf(variable.where.area)) {
    case plc::ElementKind::Word:
        return wordOf(variable, index, serial);
    case plc::ElementKind::DoubleWord:
        return variable.tag << doubleWordTagShift | ((serial * 32u + index) & serialsOfDoubleWord);
    default:
        return bitOf(variable.tag, index, serial);
    }
}

} // namespace

std::vector<quint32> valuesOf(const SoakVariable& variable, quint32 serial)
{
    std::vector<quint32> values;
    for (int index = 0; index < variable.where.count; ++index)
        values.push_back(valueOf(variable, static_cast<quint32>(index), serial));
    return values;
}

bool namesItsWrites(const SoakVariable& variable)
{
    const plc::ElementKind kind = plc::kindOf(variable.where.area);
    return kind == plc::ElementKind::Word || kind == plc::ElementKind::DoubleWord;
}

std::vector<SoakVariable> soakVariables(const std::vector<int>& stations)
{
    std::vector<SoakVariable> variables;
    quint32 loneWords = 0;
    quint32 others = mostLoneWords;
    for (const int station : stations) {
        for (const Place& place : places) {
            SoakVariable variable;
            variable.where.area = place.area;
            variable.where.element = place.element;
            variable.where.count = place.count;
            variable.where.station = station;
            variable.isWritten = place.isWritten;
            variable.tag = isLoneWord(variable.where) ? ++loneWords : ++others;
            variables.push_back(variable);
        }
    }
    return variables;
}

} // namespace soak
