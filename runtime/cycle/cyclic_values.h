// SPDX-License-Identifier: MIT
/// \file
/// \brief The cyclically refreshed variables: their requests and how good their values are.
#ifndef RUNTIME_CYCLE_CYCLIC_VALUES_H
#define RUNTIME_CYCLE_CYCLIC_VALUES_H

#include "runtime/cycle/refresh_plan.h"
#include "runtime/host/driver_values.h"
#include "runtime/model/clock.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/settings.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace plc
{

/// Values of variables by their indexes. Where it is used again its memory is, too.
struct TakenValues {
    std::vector<int> indexes;
    std::vector<CyclicValue> values; ///< at least as many
};

/// A list may have a million variables: what is kept of each is small, and failures are shared.
///
/// Every function but add() expects the lock that keeps all calls to the driver apart (see Runtime).
class CyclicValues
{
public:
    explicit CyclicValues(const Settings& settings);

    /// Before queue(). \param variable station filled in, and nothing against it (readRefusal())
    int add(const Variable& variable);

    bool contains(int index) const;
    Variable variable(int index) const { return entryOf(index).variable(); }

    /// \return the stations of the variables
    std::set<int> stations() const;

    /// \return why the block size of the settings does not suit the variables; empty when it does
    QString blockRefusal() const;

    /// Instead of queue(): what is answered is filed for the variables, but nothing is asked for.
    void expect();

    /// Hands the variables to the driver, which reads neighbouring ones in one block, before the
    /// communication thread runs; and behind them the pacing request, see isPacing().
    void queue(const DriverCalls& calls);

    /// Hands over what a plan asks for, and the pacing request. Nothing is filed for any variable.
    static void queue(const RefreshPlan& plan, const DriverCalls& calls);

    /// \return true for the request that marks the end of a pass. It is never sent. It is there because the
    ///         driver lets at most five writes pass before a cyclic read, and with nothing but cyclic reads
    ///         of stations that are switched off it would never send a sixth.
    static bool isPacing(const RW_VAR& request);

    /// \return the reply by which the pacing request is done; nothing of it is filed
    static QByteArray pacingReply();

    /// After DataCom() took a reply to \a request, a block that the driver built, as good.
    /// \return the elements that the block reads and that belong to no variable that it refreshes
    int answered(const RW_VAR& request, Clock::time_point repliedAt);

    /// After DataCom() gave \a request up. \return the same
    int givenUp(const RW_VAR& request, const Failure& why);

    /// A station does not answer: what is shown of it has failed, also where it was not tried again.
    void lost(int station, const Failure& why);

    /// The driver may hold a value for \a elements that the controller does not have.
    void doubt(const Variable& elements);

    /// \return values and state, but StationOff and writes on their way, which only the caller knows
    CyclicValue value(int index, const DriverCalls& calls) const;

    /// The same of the variables from \a first on, as many as there is room for in \a values: neighbours are taken out
    /// of the driver together.
    void values(int first, const DriverCalls& calls, std::vector<CyclicValue>* values) const;

    /// Keeps the values as they are now: value() needs no driver any more.
    void freeze(const DriverCalls& calls);

    /// From now on it is noted which variables may show something else.
    void watch();

    /// With watch(): a write to \a elements has come or ended.
    void touch(const Variable& elements);

    /// With watch(): a station was switched on or off.
    void touchStation(int station);

    /// With watch(): notes the variables that have become stale since they were taken last.
    void touchAged();

    /// Takes up to \a most of the variables that may show something else than when they were taken last, each once,
    /// with their values.
    void takeTouched(std::size_t most, const DriverCalls& calls, TakenValues* taken);

    /// \return true when there are more of them
    bool hasTouched() const { return m_touchedTaken < m_touched.size(); }

    /// A reply to a read of bits is padded to whole bytes, and the driver files padding behind the bits.
    /// \return how many elements to read from \a asked's first on so that no variable of this list shows
    ///         the padding; \a asked's own number where that is enough, and for words
    int wholeBits(const Variable& asked) const;

private:
    struct Block;
    using Reason = std::shared_ptr<const Failure>;

    /// What one request reads for a variable.
    struct Part {
        quint32 variable; // which one it belongs to
        int element;      // the first one
        int count;
        quint8 area; // of what is asked for
        quint8 station;
        bool doubtful = false;  // a write to it failed since it was read
        Reason failure;         // of the last attempt; null: it has not failed
        Block* block = nullptr; // that read it last, or is to read it

        Variable asked() const { return {area, element, count, station}; }
        std::optional<Clock::time_point> readAt() const;
    };

    /// A Variable with its station, in less room.
    struct Entry {
        int element;
        int count;
        quint16 valueElements;
        quint8 area;
        quint8 station;
        quint32 firstPart = 0; // place in m_partsOf; its parts end where those of the next begin
        ValueState taken = ValueState::NeverRead; // when it was taken last, as judge() has it
        bool touched = false;

        Variable variable() const { return {area, element, count, station, valueElements}; }
    };

    /// Places in m_partsOf.
    struct PartsRange {
        const quint32* first;
        const quint32* behind;
        const quint32* begin() const { return first; }
        const quint32* end() const { return behind; }
    };

    /// Variables by a list of indexes, or side by side.
    struct Wanted {
        const int* indexes; // null: side by side
        int first;
        std::size_t size;

        int at(std::size_t place) const
        {
            return indexes != nullptr ? indexes[place] : first + static_cast<int>(place);
        }
    };

    /// When it is, and the age of what was read last: neighbours were read at the same time.
    struct Moment {
        Clock::time_point now;
        qint64 epochMs;
        Clock::time_point read;
        qint64 ageMs;
    };

    using BlockKey = std::tuple<int, int, int, int>; // first element, number of elements, area and station
    using KnownBlock = std::pair<const BlockKey, Block>;
    struct Block {
        std::vector<Part*> parts;              // what it reads whole, by their first elements
        int unused = 0;                        // elements that it reads for none of them
        bool sharesParts = false;              // with another block, which notes when they were read
        std::optional<Clock::time_point> read; // when the last good reply came
        unsigned long setbacks = 0;            // m_setbacks when all of its parts were good
        KnownBlock* next = nullptr;            // that followed it the last time
    };

    const Entry& entryOf(int index) const { return m_variables[static_cast<std::size_t>(index)]; }
    PartsRange partsOf(std::size_t variable) const;
    std::vector<Variable> variables() const;
    RefreshPlan plan() const;
    void makeParts(const PlannedParts& planned);
    void findParts();
    std::vector<Part*> partsIn(const RW_VAR& request);
    static int elementsOf(const std::vector<Part*>& parts, int begin);
    Block& blockOf(const RW_VAR& request);
    KnownBlock& knownBlock(const RW_VAR& request, const BlockKey& key);
    void fill(Block& block, const RW_VAR& request);
    ValueState stateOf(const Part& part, Clock::time_point now) const;
    ValueState stateOf(std::size_t variable, Clock::time_point now) const;
    void judge(std::size_t variable, Moment* moment, CyclicValue* value) const;
    void takeOut(const Wanted& wanted, const DriverCalls& calls, CyclicValue* values) const;
    void takeOutRun(const Wanted& wanted, std::size_t first, std::size_t end, const DriverCalls& calls,
                    CyclicValue* values) const;
    std::size_t runFrom(const Wanted& wanted, std::size_t first) const;
    void touchAt(std::size_t index);
    bool shows(const Variable& bit) const;

    const Settings m_settings;
    const Clock::duration m_staleAfter; // the age from which on a value is stale
    std::vector<Entry> m_variables;
    std::vector<quint32>
        m_partsOf; // places in m_parts, by variable; of each variable by their first elements
    bool m_frozen = false;
    std::vector<quint32> m_frozenValues; // see freeze(): of one variable behind the other
    std::vector<quint32> m_frozenAt;     // where those of each begin
    bool m_watched = false;
    std::vector<int> m_touched;
    std::size_t m_touchedTaken = 0;     // of m_touched, how many were taken
    Clock::time_point m_agesFrom;       // before that nothing can become stale that is not
    std::vector<Part> m_parts;          // by station, area and first element of what is asked
    std::map<BlockKey, Block> m_blocks; // as the driver made them, each looked up once
    KnownBlock* m_latest = nullptr;     // of m_blocks: what blockOf() gave last
    unsigned long m_setbacks = 1;       // how often parts failed or became doubtful
};

} // namespace plc

#endif
