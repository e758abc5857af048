// SPDX-License-Identifier: MIT
#include "runtime/cycle/cyclic_values.h"

#include "runtime/host/request_keys.h"

#include <QDateTime>

#include <algorithm>
#include <tuple>
#include <utility>

namespace plc
{

namespace
{

// No controller has this number, so nobody switches it off.
const int pacingStation = 256;
const int pacingReplySize = 11; // what the driver expects for one word

const int judgedOnly = 1; // RW_VAR::accessFlag: the reply's data is not filed

// Behind the bits asked for the driver files one bit of padding, and when values are kept per station it
// empties a further one.
const int spoiledBits = 2;

// Elements of neighbours, and what lies between them, that are taken out of the driver at once.
const int mostTakenTogether = 250;

using PartKey = std::tuple<int, int, int>; // station, area and first element

/// \return the element behind the last one that a block reads
int endOfBlock(const RW_VAR& request)
{
    return request.address + elementsRead(request.area, request.count);
}

HOST_VAR hostVariable(const Variable& run)
{
    HOST_VAR variable = {};
    variable.area = static_cast<unsigned char>(run.area);
    variable.station = static_cast<unsigned char>(run.station);
    variable.address = addressText(run.area, run.element);
    variable.count = driverReadCount(run.area, run.count);
    return variable;
}

RW_VAR singleRecord(const Variable& element)
{
    RW_VAR request = {};
    request.hostKey = cyclicKey;
    request.area = element.area;
    request.address = element.element;
    request.station = element.station;
    request.count = driverReadCount(element.area, element.count);
    return request;
}

RW_VAR pacingRecord()
{
    RW_VAR request = {};
    request.hostKey = pacingKey;
    request.accessFlag = judgedOnly;
    request.area = wordArea;
    request.station = pacingStation;
    request.count = 1;
    return request;
}

} // namespace

// Ages are told in whole milliseconds.
CyclicValues::CyclicValues(const Settings& settings)
    : m_settings(settings),
      m_staleAfter(std::chrono::milliseconds(settings.staleAfterMs) + std::chrono::milliseconds(1))
{
}

int CyclicValues::add(const Variable& variable)
{
    Entry entry = {};
    entry.element = variable.element;
    entry.count = variable.count;
    entry.valueElements = static_cast<quint16>(variable.valueElements);
    entry.area = static_cast<quint8>(variable.area);
    entry.station = static_cast<quint8>(variable.station);
    m_variables.push_back(entry);
    return static_cast<int>(m_variables.size()) - 1;
}

bool CyclicValues::contains(int index) const
{
    return index >= 0 && index < static_cast<int>(m_variables.size());
}

std::optional<Clock::time_point> CyclicValues::Part::readAt() const
{
    return block != nullptr ? block->read : std::nullopt;
}

CyclicValues::PartsRange CyclicValues::partsOf(std::size_t variable) const
{
    const bool isLast = variable + 1 == m_variables.size();
    const std::size_t end = isLast ? m_partsOf.size() : m_variables[variable + 1].firstPart;
    return {m_partsOf.data() + m_variables[variable].firstPart, m_partsOf.data() + end};
}

std::vector<Variable> CyclicValues::variables() const
{
    std::vector<Variable> variables;
    variables.reserve(m_variables.size());
    for (const Entry& entry : m_variables)
        variables.push_back(entry.variable());
    return variables;
}

std::set<int> CyclicValues::stations() const
{
    std::set<int> stations;
    for (const Entry& entry : m_variables)
        stations.insert(entry.station);
    return stations;
}

QString CyclicValues::blockRefusal() const
{
    return plc::blockRefusal(variables(), m_settings.maxBlockCount);
}

/// What a block reads lies side by side: it is gone through with every reply.
void CyclicValues::makeParts(const PlannedParts& planned)
{
    m_parts.reserve(planned.size());
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        const Variable variable = m_variables[index].variable();
        for (const PlannedPart* piece = planned.begin(index); piece != planned.end(index); ++piece) {
            const Variable asked = askedBy(*piece, variable);
            Part part = {};
            part.variable = static_cast<quint32>(index);
            part.element = asked.element;
            part.count = asked.count;
            part.area = static_cast<quint8>(asked.area);
            part.station = static_cast<quint8>(asked.station);
            m_parts.push_back(part);
        }
    }
    std::sort(m_parts.begin(), m_parts.end(), [](const Part& a, const Part& b) {
        return std::tie(a.station, a.area, a.element, a.variable, a.count) <
               std::tie(b.station, b.area, b.element, b.variable, b.count);
    });
    findParts();
}

void CyclicValues::findParts()
{
    m_partsOf.resize(m_parts.size());
    for (const Part& part : m_parts)
        ++m_variables[part.variable].firstPart; // how many it has
    quint32 end = 0;
    for (Entry& entry : m_variables)
        entry.firstPart = end += entry.firstPart;
    for (std::size_t index = m_parts.size(); index-- > 0;)
        m_partsOf[--m_variables[m_parts[index].variable].firstPart] = static_cast<quint32>(index);
}

RefreshPlan CyclicValues::plan() const
{
    return refreshPlan(variables(), m_settings);
}

void CyclicValues::expect()
{
    makeParts(plan().parts);
}

void CyclicValues::queue(const DriverCalls& calls)
{
    if (m_variables.empty())
        return;
    RefreshPlan refresh = plan();
    makeParts(refresh.parts);
    refresh.parts = PlannedParts(); // gives its memory back before the driver needs some
    queue(refresh, calls);
}

void CyclicValues::queue(const RefreshPlan& plan, const DriverCalls& calls)
{
    QList<HOST_VAR> list;
    list.reserve(static_cast<int>(plan.runs.size()));
    for (const Variable& run : plan.runs)
        list.append(hostVariable(run));
    calls.ReCreatReadVarList(&list);
    for (const Variable& element : plan.doubleWords) {
        RW_VAR request = singleRecord(element);
        calls.AddListReadVar(&request);
    }
    RW_VAR pacing = pacingRecord();
    calls.AddListReadVar(&pacing);
}

bool CyclicValues::isPacing(const RW_VAR& request)
{
    return request.hostKey == pacingKey;
}

QByteArray CyclicValues::pacingReply()
{
    return QByteArray(pacingReplySize, '\0');
}

/// \return the parts of all variables that a block reads whole, by their first element
std::vector<CyclicValues::Part*> CyclicValues::partsIn(const RW_VAR& request)
{
    const int end = endOfBlock(request);
    const PartKey first = std::make_tuple(request.station, request.area, request.address);
    const PartKey behind = std::make_tuple(request.station, request.area, end);
    const auto keyOf = [](const Part& part) { return PartKey(part.station, part.area, part.element); };
    auto part = std::partition_point(m_parts.begin(), m_parts.end(),
                                     [&](const Part& candidate) { return keyOf(candidate) < first; });
    std::vector<Part*> parts;
    for (; part != m_parts.end() && keyOf(*part) < behind; ++part) {
        if (part->element + part->count <= end)
            parts.push_back(&*part);
    }
    parts.shrink_to_fit();
    return parts;
}

/// \param parts by their first elements
/// \return how many elements from \a begin on lie in any of them
int CyclicValues::elementsOf(const std::vector<Part*>& parts, int begin)
{
    int elements = 0;
    int countedUpTo = begin;
    for (const Part* part : parts) {
        const int end = part->element + part->count;
        elements += std::max(0, end - std::max(countedUpTo, part->element));
        countedUpTo = std::max(countedUpTo, end);
    }
    return elements;
}

/// The driver's list goes round, so that a block is nearly always followed by the one that followed it before.
CyclicValues::Block& CyclicValues::blockOf(const RW_VAR& request)
{
    const BlockKey key = std::make_tuple(request.address, request.count, request.area, request.station);
    KnownBlock* block = m_latest != nullptr ? m_latest->second.next : nullptr;
    if (block == nullptr || block->first != key)
        block = &knownBlock(request, key);
    if (m_latest != nullptr)
        m_latest->second.next = block;
    m_latest = block;
    return block->second;
}

CyclicValues::KnownBlock& CyclicValues::knownBlock(const RW_VAR& request, const BlockKey& key)
{
    auto known = m_blocks.find(key);
    if (known == m_blocks.end()) {
        known = m_blocks.insert({key, Block()}).first;
        fill(known->second, request);
    }
    return *known;
}

void CyclicValues::fill(Block& block, const RW_VAR& request)
{
    block.parts = partsIn(request);
    block.unused = elementsRead(request.area, request.count) - elementsOf(block.parts, request.address);
    for (Part* part : block.parts) {
        if (part->block != nullptr)
            block.sharesParts = part->block->sharesParts = true;
        else
            part->block = &block;
    }
}

/// As nearly always all parts were good before, and nobody watches: then the block notes the time for all of them.
int CyclicValues::answered(const RW_VAR& request, Clock::time_point repliedAt)
{
    Block& block = blockOf(request);
    block.read = repliedAt;
    if (block.setbacks == m_setbacks && !m_watched && !block.sharesParts)
        return block.unused;
    block.setbacks = m_setbacks;
    for (Part* part : block.parts) {
        part->block = &block;
        part->doubtful = false;
        part->failure.reset();
        touchAt(part->variable);
    }
    return block.unused;
}

int CyclicValues::givenUp(const RW_VAR& request, const Failure& why)
{
    const Block& block = blockOf(request);
    // Other threads hold copies of a failure's members. The thread sanitizer sees how a copied one goes away, but not
    // into QtCore, where one that was moved does.
    const Reason reason = std::make_shared<const Failure>(why);
    ++m_setbacks;
    for (Part* part : block.parts) {
        part->failure = reason;
        touchAt(part->variable);
    }
    return block.unused;
}

void CyclicValues::lost(int station, const Failure& why)
{
    const Reason reason = std::make_shared<const Failure>(why);
    ++m_setbacks;
    for (Part& part : m_parts) {
        if (part.station != station)
            continue;
        part.failure = reason;
        touchAt(part.variable);
    }
}

void CyclicValues::doubt(const Variable& elements)
{
    ++m_setbacks;
    for (Part& part : m_parts) {
        const Variable variable = m_variables[part.variable].variable();
        part.doubtful = part.doubtful || overlaps(pieceOf(variable, part.asked()).shown, elements);
    }
}

void CyclicValues::watch()
{
    m_watched = true;
}

void CyclicValues::touchAt(std::size_t index)
{
    Entry& entry = m_variables[index];
    if (!m_watched || entry.touched)
        return;
    entry.touched = true;
    m_touched.push_back(static_cast<int>(index));
}

void CyclicValues::touch(const Variable& elements)
{
    for (std::size_t index = 0; m_watched && index < m_variables.size(); ++index) {
        if (overlaps(m_variables[index].variable(), elements))
            touchAt(index);
    }
}

void CyclicValues::touchStation(int station)
{
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        if (m_variables[index].station == station)
            touchAt(index);
    }
}

/// What was read last becomes stale last: where all have been looked at, there is nothing to find before the oldest
/// of them can be stale.
void CyclicValues::touchAged()
{
    const Clock::time_point now = Clock::now();
    if (now < m_agesFrom)
        return;
    Clock::time_point oldest = now;
    for (const Part& part : m_parts) {
        const std::optional<Clock::time_point> read = part.readAt();
        if (read && now - *read < m_staleAfter)
            oldest = std::min(oldest, *read);
    }
    m_agesFrom = oldest + m_staleAfter;
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        if (stateOf(index, now) != m_variables[index].taken)
            touchAt(index);
    }
}

void CyclicValues::takeTouched(std::size_t most, const DriverCalls& calls, TakenValues* taken)
{
    const std::size_t count = std::min(most, m_touched.size() - m_touchedTaken);
    const auto first = m_touched.begin() + static_cast<std::ptrdiff_t>(m_touchedTaken);
    taken->indexes.assign(first, first + static_cast<std::ptrdiff_t>(count));
    m_touchedTaken += count;
    if (!hasTouched()) {
        m_touched.clear();
        m_touchedTaken = 0;
    }
    if (taken->values.size() < count)
        taken->values.resize(count);
    takeOut({taken->indexes.data(), 0, count}, calls, taken->values.data());
    for (std::size_t place = 0; place < count; ++place) {
        Entry& entry = m_variables[static_cast<std::size_t>(taken->indexes[place])];
        entry.touched = false;
        entry.taken = taken->values[place].state;
    }
}

void CyclicValues::freeze(const DriverCalls& calls)
{
    m_frozenAt.reserve(m_variables.size());
    for (const Entry& entry : m_variables) {
        m_frozenAt.push_back(static_cast<quint32>(m_frozenValues.size()));
        const std::vector<quint32> values = valuesInDriver(calls, entry.variable());
        m_frozenValues.insert(m_frozenValues.end(), values.begin(), values.end());
    }
    m_frozen = true;
}

ValueState CyclicValues::stateOf(const Part& part, Clock::time_point now) const
{
    const std::optional<Clock::time_point> read = part.readAt();
    if (!read)
        return ValueState::NeverRead;
    if (part.failure)
        return ValueState::Failed;
    if (now - *read >= m_staleAfter)
        return ValueState::Stale;
    return part.doubtful ? ValueState::Unconfirmed : ValueState::Fresh;
}

/// A variable is as good as the worst of its parts.
ValueState CyclicValues::stateOf(std::size_t variable, Clock::time_point now) const
{
    const PartsRange parts = partsOf(variable);
    ValueState state = parts.first == parts.behind ? ValueState::NeverRead : ValueState::Fresh;
    for (const quint32 index : parts)
        state = std::min(state, stateOf(m_parts[index], now));
    return state;
}

void CyclicValues::judge(std::size_t variable, Moment* moment, CyclicValue* value) const
{
    const PartsRange parts = partsOf(variable);
    value->state = parts.first == parts.behind ? ValueState::NeverRead : ValueState::Fresh;
    value->ageMs = value->readAtMs = -1;
    const Failure* failure = nullptr;
    std::optional<Clock::time_point> oldest;
    for (const quint32 index : parts) {
        const Part& part = m_parts[index];
        const std::optional<Clock::time_point> read = part.readAt();
        if (read && (!oldest || *read < *oldest))
            oldest = read;
        if (part.failure)
            failure = part.failure.get();
        value->state = std::min(value->state, stateOf(part, moment->now));
    }
    if (failure != nullptr)
        value->failure = *failure;
    else if (hasFailed(value->failure))
        value->failure = Failure();
    if (value->state == ValueState::NeverRead || !oldest)
        return;
    if (moment->read != *oldest) {
        moment->read = *oldest;
        moment->ageMs = std::chrono::duration_cast<std::chrono::milliseconds>(moment->now - *oldest).count();
    }
    value->ageMs = moment->ageMs;
    value->readAtMs = moment->epochMs - value->ageMs;
}

CyclicValue CyclicValues::value(int index, const DriverCalls& calls) const
{
    CyclicValue value;
    takeOut({nullptr, index, 1}, calls, &value);
    return value;
}

void CyclicValues::values(int first, const DriverCalls& calls, std::vector<CyclicValue>* values) const
{
    takeOut({nullptr, first, values->size()}, calls, values->data());
}

/// \return the end of the neighbours from \a first on that one call to the driver brings
std::size_t CyclicValues::runFrom(const Wanted& wanted, std::size_t first) const
{
    const Entry& begin = entryOf(wanted.at(first));
    std::size_t end = first + 1;
    int element = begin.element + begin.count;
    for (; end < wanted.size; ++end) {
        const Entry& next = entryOf(wanted.at(end));
        const bool isNeighbour =
            next.station == begin.station && next.area == begin.area && next.element >= element;
        if (!isNeighbour || next.element + next.count - begin.element > mostTakenTogether)
            break;
        element = next.element + next.count;
    }
    return end;
}

void CyclicValues::takeOut(const Wanted& wanted, const DriverCalls& calls, CyclicValue* values) const
{
    const Clock::time_point now = Clock::now();
    Moment moment = {now, QDateTime::currentMSecsSinceEpoch(), now, 0};
    for (std::size_t place = 0; place < wanted.size; ++place)
        judge(static_cast<std::size_t>(wanted.at(place)), &moment, &values[place]);
    for (std::size_t first = 0; first < wanted.size;) {
        const std::size_t end = runFrom(wanted, first);
        takeOutRun(wanted, first, end, calls, values);
        first = end;
    }
}

/// \param first, end neighbours
void CyclicValues::takeOutRun(const Wanted& wanted, std::size_t first, std::size_t end,
                              const DriverCalls& calls, CyclicValue* values) const
{
    Variable run = variable(wanted.at(first));
    run.count = endOf(variable(wanted.at(end - 1))) - run.element;
    std::vector<quint32> held; // looked up when the first wants it: before the start there is no driver
    for (std::size_t place = first; place < end; ++place) {
        const int index = wanted.at(place);
        const Entry& entry = entryOf(index);
        CyclicValue& value = values[place];
        if (value.state ==
            ValueState::NeverRead) { // what the driver holds may come from an earlier use of it
            value.values.assign(static_cast<std::size_t>(entry.count), 0);
            continue;
        }
        const quint32* begin = nullptr;
        if (m_frozen) {
            begin = m_frozenValues.data() + m_frozenAt[static_cast<std::size_t>(index)];
        } else {
            if (held.empty())
                held = valuesInDriver(calls, run);
            begin = held.data() + (entry.element - run.element);
        }
        value.values.assign(begin, begin + entry.count);
    }
}

bool CyclicValues::shows(const Variable& bit) const
{
    return std::any_of(m_variables.begin(), m_variables.end(),
                       [&bit](const Entry& entry) { return overlaps(entry.variable(), bit); });
}

int CyclicValues::wholeBits(const Variable& asked) const
{
    if (kindOf(asked.area) != ElementKind::Bit)
        return asked.count;
    Variable behind = asked;
    int count = asked.count;
    while (count % bitsOfByte != 0 && asked.element + count < areaSize(asked.area)) {
        behind.element = asked.element + count;
        behind.count = spoiledBits;
        if (!shows(behind))
            break;
        ++count;
    }
    return count;
}

} // namespace plc
