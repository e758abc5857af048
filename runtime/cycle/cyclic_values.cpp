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

using PartKey = std::tuple<int, int, int>;

PartKey keyOf(const Variable& asked)
{
    return std::make_tuple(asked.station, asked.area, asked.element);
}

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
    variable.name = variableText(run);
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

int CyclicValues::add(const Variable& variable)
{
    Entry entry;
    entry.variable = variable;
    m_variables.push_back(entry);
    return static_cast<int>(m_variables.size()) - 1;
}

bool CyclicValues::contains(int index) const
{
    return index >= 0 && index < static_cast<int>(m_variables.size());
}

void CyclicValues::Part::set(const Failure& why)
{
    // Other threads hold copies. The thread sanitizer sees how a moved one goes away, but not into QtCore.
    failure = Failure(why);
}

std::optional<Clock::time_point> CyclicValues::Part::readAt() const
{
    return block != nullptr ? std::max(read, block->read) : read;
}

std::vector<Variable> CyclicValues::variables() const
{
    std::vector<Variable> variables;
    for (const Entry& entry : m_variables)
        variables.push_back(entry.variable);
    return variables;
}

std::set<int> CyclicValues::stations() const
{
    std::set<int> stations;
    for (const Entry& entry : m_variables)
        stations.insert(entry.variable.station);
    return stations;
}

QString CyclicValues::blockRefusal() const
{
    return plc::blockRefusal(variables(), m_settings.maxBlockCount);
}

/// What a block reads lies side by side: it is gone through with every reply.
void CyclicValues::makeParts(const RefreshPlan& plan)
{
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        for (const ReadPiece& piece : plan.parts[index]) {
            Part part;
            part.piece = piece;
            part.variable = index;
            m_parts.push_back(part);
        }
    }
    std::stable_sort(m_parts.begin(), m_parts.end(), [](const Part& a, const Part& b) {
        return keyOf(a.piece.asked) < keyOf(b.piece.asked);
    });
    for (std::size_t index = 0; index < m_parts.size(); ++index)
        m_variables[m_parts[index].variable].parts.push_back(index);
}

RefreshPlan CyclicValues::plan() const
{
    return refreshPlan(variables(), m_settings);
}

void CyclicValues::expect()
{
    makeParts(plan());
}

void CyclicValues::queue(const DriverCalls& calls)
{
    if (m_variables.empty())
        return;
    const RefreshPlan refresh = plan();
    makeParts(refresh);
    QList<HOST_VAR> list;
    for (const Variable& run : refresh.runs)
        list.append(hostVariable(run));
    calls.ReCreatReadVarList(&list);
    for (const Variable& element : refresh.doubleWords) {
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
    auto part = std::partition_point(m_parts.begin(), m_parts.end(), [&first](const Part& candidate) {
        return keyOf(candidate.piece.asked) < first;
    });
    std::vector<Part*> parts;
    for (; part != m_parts.end() && keyOf(part->piece.asked) < behind; ++part) {
        const Variable& asked = part->piece.asked;
        if (asked.element + asked.count <= end)
            parts.push_back(&*part);
    }
    return parts;
}

/// \param parts by their first elements
/// \return how many elements from \a begin on lie in any of them
int CyclicValues::elementsOf(const std::vector<Part*>& parts, int begin)
{
    int elements = 0;
    int countedUpTo = begin;
    for (const Part* part : parts) {
        const Variable& asked = part->piece.asked;
        const int end = asked.element + asked.count;
        elements += std::max(0, end - std::max(countedUpTo, asked.element));
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
        part->read = repliedAt;
        part->doubtful = false;
        if (hasFailed(part->failure))
            part->set(Failure());
        touchAt(part->variable);
    }
    return block.unused;
}

int CyclicValues::givenUp(const RW_VAR& request, const Failure& why)
{
    const Block& block = blockOf(request);
    ++m_setbacks;
    for (Part* part : block.parts) {
        part->set(why);
        touchAt(part->variable);
    }
    return block.unused;
}

void CyclicValues::lost(int station, const Failure& why)
{
    ++m_setbacks;
    for (Part& part : m_parts) {
        if (part.piece.asked.station != station)
            continue;
        part.set(why);
        touchAt(part.variable);
    }
}

void CyclicValues::doubt(const Variable& elements)
{
    ++m_setbacks;
    for (Part& part : m_parts)
        part.doubtful = part.doubtful || overlaps(part.piece.shown, elements);
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
        if (overlaps(m_variables[index].variable, elements))
            touchAt(index);
    }
}

void CyclicValues::touchStation(int station)
{
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        if (m_variables[index].variable.station == station)
            touchAt(index);
    }
}

/// \return the age from which on a value is stale: ages are told in whole milliseconds
Clock::duration CyclicValues::staleAfter() const
{
    return std::chrono::milliseconds(m_settings.staleAfterMs) + std::chrono::milliseconds(1);
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
        if (read && now - *read < staleAfter())
            oldest = std::min(oldest, *read);
    }
    m_agesFrom = oldest + staleAfter();
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        if (stateOf(m_variables[index], now) != m_variables[index].taken)
            touchAt(index);
    }
}

std::vector<int> CyclicValues::takeTouched()
{
    const Clock::time_point now = Clock::now();
    for (const int index : m_touched) {
        Entry& entry = m_variables[static_cast<std::size_t>(index)];
        entry.touched = false;
        entry.taken = stateOf(entry, now);
    }
    return std::exchange(m_touched, std::vector<int>());
}

void CyclicValues::freeze(const DriverCalls& calls)
{
    for (Entry& entry : m_variables)
        entry.frozen = valuesInDriver(calls, entry.variable);
    m_frozen = true;
}

ValueState CyclicValues::stateOf(const Part& part, Clock::time_point now) const
{
    const std::optional<Clock::time_point> read = part.readAt();
    if (!read)
        return ValueState::NeverRead;
    if (hasFailed(part.failure))
        return ValueState::Failed;
    if (now - *read >= staleAfter())
        return ValueState::Stale;
    return part.doubtful ? ValueState::Unconfirmed : ValueState::Fresh;
}

/// A variable is as good as the worst of its parts.
ValueState CyclicValues::stateOf(const Entry& entry, Clock::time_point now) const
{
    ValueState state = entry.parts.empty() ? ValueState::NeverRead : ValueState::Fresh;
    for (const std::size_t index : entry.parts)
        state = std::min(state, stateOf(m_parts[index], now));
    return state;
}

void CyclicValues::judge(const Entry& entry, Clock::time_point now, qint64 epochMs, CyclicValue* value) const
{
    value->state = stateOf(entry, now);
    std::optional<Clock::time_point> oldest;
    for (const std::size_t index : entry.parts) {
        const Part& part = m_parts[index];
        const std::optional<Clock::time_point> read = part.readAt();
        if (read && (!oldest || *read < *oldest))
            oldest = read;
        if (hasFailed(part.failure))
            value->failure = part.failure;
    }
    if (value->state == ValueState::NeverRead || !oldest)
        return;
    value->ageMs = std::chrono::duration_cast<std::chrono::milliseconds>(now - *oldest).count();
    value->readAtMs = epochMs - value->ageMs;
}

CyclicValue CyclicValues::value(int index, const DriverCalls& calls) const
{
    return values({index}, calls).front();
}

/// \return the end of the neighbours from \a first on that one call to the driver brings
std::size_t CyclicValues::runFrom(const std::vector<int>& indexes, std::size_t first) const
{
    const Variable& begin = variable(indexes[first]);
    std::size_t end = first + 1;
    int element = endOf(begin);
    for (; end < indexes.size(); ++end) {
        const Variable& next = variable(indexes[end]);
        const bool isNeighbour =
            next.station == begin.station && next.area == begin.area && next.element >= element;
        if (!isNeighbour || endOf(next) - begin.element > mostTakenTogether)
            break;
        element = endOf(next);
    }
    return end;
}

std::vector<CyclicValue> CyclicValues::values(const std::vector<int>& indexes, const DriverCalls& calls) const
{
    const Clock::time_point now = Clock::now();
    const qint64 epochMs = QDateTime::currentMSecsSinceEpoch();
    std::vector<CyclicValue> values(indexes.size());
    for (std::size_t place = 0; place < indexes.size(); ++place)
        judge(m_variables[static_cast<std::size_t>(indexes[place])], now, epochMs, &values[place]);
    for (std::size_t first = 0; first < indexes.size();) {
        const std::size_t end = runFrom(indexes, first);
        takeOut(indexes, first, end, calls, &values);
        first = end;
    }
    return values;
}

/// \param first, end neighbours
void CyclicValues::takeOut(const std::vector<int>& indexes, std::size_t first, std::size_t end,
                           const DriverCalls& calls, std::vector<CyclicValue>* values) const
{
    Variable run = variable(indexes[first]);
    run.count = endOf(variable(indexes[end - 1])) - run.element;
    std::vector<quint32> held; // looked up when the first wants it: before the start there is no driver
    for (std::size_t place = first; place < end; ++place) {
        const Entry& entry = m_variables[static_cast<std::size_t>(indexes[place])];
        CyclicValue& value = (*values)[place];
        if (value.state ==
            ValueState::NeverRead) { // what the driver holds may come from an earlier use of it
            value.values.assign(static_cast<std::size_t>(entry.variable.count), 0);
        } else if (m_frozen) {
            value.values = entry.frozen;
        } else {
            if (held.empty())
                held = valuesInDriver(calls, run);
            const auto begin = held.begin() + (entry.variable.element - run.element);
            value.values.assign(begin, begin + entry.variable.count);
        }
    }
}

bool CyclicValues::shows(const Variable& bit) const
{
    return std::any_of(m_variables.begin(), m_variables.end(),
                       [&bit](const Entry& entry) { return overlaps(entry.variable, bit); });
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
