#include "panel/cyclic_values.h"

#include "panel/request_keys.h"

#include <algorithm>

namespace panel
{

namespace
{

// No controller has this number, so nobody switches it off.
const int pacingStation = 256;
const int pacingReplySize = 11; // what the driver expects for one word

const int judgedOnly = 1; // RW_VAR::accessFlag: the reply's data is not filed

const int bitsOfByte = 8;

// Behind the bits asked for the driver files one bit of padding, and when values are kept per station it
// empties a further one.
const int spoiledBits = 2;

// A request finds its part again by its sub-key: entry and part in one number.
const int partsOfEntry = 0x10000;

} // namespace

QString valueStateWord(ValueState state)
{
    switch (state) {
    case ValueState::NeverRead:
        return QStringLiteral("never read");
    case ValueState::StationOff:
        return QStringLiteral("station off");
    case ValueState::Failed:
        return QStringLiteral("failed");
    case ValueState::Stale:
        return QStringLiteral("stale");
    case ValueState::Unconfirmed:
        return QStringLiteral("unconfirmed");
    case ValueState::Fresh:
        return QStringLiteral("fresh");
    }
    return QString();
}

int CyclicValues::add(const Variable& variable)
{
    Entry entry;
    entry.variable = variable;
    for (const ReadPiece& piece : readPieces(variable, m_settings.maxBlockCount)) {
        Part part;
        part.piece = piece;
        entry.parts.push_back(part);
    }
    m_variables.push_back(entry);
    return static_cast<int>(m_variables.size()) - 1;
}

bool CyclicValues::contains(int index) const
{
    return index >= 0 && index < static_cast<int>(m_variables.size());
}

RW_VAR CyclicValues::record(const Part& part, int key, int subKey) const
{
    const Variable& asked = part.piece.asked;
    RW_VAR request = {};
    request.hostKey = key;
    request.hostSubKey = subKey;
    request.name2 = addressText(asked.area, asked.element);
    request.area = asked.area;
    request.address = asked.element;
    request.station = asked.station;
    request.count = driverReadCount(asked.area, wholeBits(asked));
    return request;
}

RW_VAR CyclicValues::pacingRecord() const
{
    RW_VAR request = {};
    request.hostKey = pacingKey;
    request.accessFlag = judgedOnly;
    request.area = 9;
    request.station = pacingStation;
    request.count = 1;
    return request;
}

void CyclicValues::queue(const DriverCalls& calls) const
{
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        const std::vector<Part>& parts = m_variables[index].parts;
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const int subKey = static_cast<int>(index) * partsOfEntry + static_cast<int>(part);
            RW_VAR request = record(parts[part], static_cast<int>(index) + 1, subKey);
            calls.AddListReadVar(&request);
        }
    }
    if (m_variables.empty())
        return;
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

CyclicValues::Part* CyclicValues::find(const RW_VAR& request)
{
    const int index = request.hostKey - 1;
    const auto part = static_cast<std::size_t>(request.hostSubKey % partsOfEntry);
    if (!contains(index))
        return nullptr;
    Entry& entry = m_variables[static_cast<std::size_t>(index)];
    return part < entry.parts.size() ? &entry.parts[part] : nullptr;
}

void CyclicValues::answered(const RW_VAR& request)
{
    Part* part = find(request);
    if (part == nullptr)
        return;
    part->read.start();
    part->doubtful = false;
    part->code = 0;
    part->reason.clear();
}

void CyclicValues::givenUp(const RW_VAR& request, int code, const QString& why)
{
    Part* part = find(request);
    if (part == nullptr)
        return;
    part->code = code;
    part->reason = why;
}

void CyclicValues::doubt(const Variable& elements)
{
    for (Entry& entry : m_variables) {
        for (Part& part : entry.parts)
            part.doubtful = part.doubtful || overlaps(part.piece.shown, elements);
    }
}

ValueState CyclicValues::stateOf(const Part& part) const
{
    if (!part.read.isValid())
        return ValueState::NeverRead;
    if (part.code != 0)
        return ValueState::Failed;
    if (part.read.elapsed() > m_settings.staleAfterMs)
        return ValueState::Stale;
    return part.doubtful ? ValueState::Unconfirmed : ValueState::Fresh;
}

/// A variable is as good as the worst of its parts.
void CyclicValues::judge(const Entry& entry, CyclicValue* value) const
{
    value->state = ValueState::Fresh;
    for (const Part& part : entry.parts) {
        value->state = std::min(value->state, stateOf(part));
        if (part.read.isValid())
            value->ageMs = std::max(value->ageMs, part.read.elapsed());
        if (part.code != 0) {
            value->code = part.code;
            value->reason = part.reason;
        }
    }
    if (value->state == ValueState::NeverRead)
        value->ageMs = -1;
}

CyclicValue CyclicValues::value(int index, const DriverCalls& calls) const
{
    const Entry& entry = m_variables[static_cast<std::size_t>(index)];
    const Variable& shown = entry.variable;
    CyclicValue value;
    judge(entry, &value);
    value.values = valuesInDriver(calls, shown);
    return value;
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

} // namespace panel
