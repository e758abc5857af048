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
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace plc
{

/// Every function but add() expects the lock that keeps all calls to the driver apart (see Runtime).
class CyclicValues
{
public:
    explicit CyclicValues(const Settings& settings) : m_settings(settings) {}

    /// Before queue(). \param variable station filled in, and nothing against it (readRefusal())
    int add(const Variable& variable);

    bool contains(int index) const;
    const Variable& variable(int index) const
    {
        return m_variables[static_cast<std::size_t>(index)].variable;
    }

    /// \return the stations of the variables
    std::set<int> stations() const;

    /// \return why the block size of the settings does not suit the variables; empty when it does
    QString blockRefusal() const;

    /// Instead of queue(): what is answered is filed for the variables, but nothing is asked for.
    void expect();

    /// Hands the variables to the driver, which reads neighbouring ones in one block, before the
    /// communication thread runs; and behind them the pacing request, see isPacing().
    void queue(const DriverCalls& calls);

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

    /// \return the same of several variables: neighbours are taken out of the driver together
    std::vector<CyclicValue> values(const std::vector<int>& indexes, const DriverCalls& calls) const;

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

    /// \return the variables that may show something else than when they were taken last, each once
    std::vector<int> takeTouched();

    /// A reply to a read of bits is padded to whole bytes, and the driver files padding behind the bits.
    /// \return how many elements to read from \a asked's first on so that no variable of this list shows
    ///         the padding; \a asked's own number where that is enough, and for words
    int wholeBits(const Variable& asked) const;

private:
    struct Block;
    struct Part {
        ReadPiece piece;
        std::size_t variable = 0;              // which one it belongs to
        std::optional<Clock::time_point> read; // when the last good reply came
        bool doubtful = false;                 // a write to it failed since
        Failure failure;                       // of the last attempt
        Block* block = nullptr;                // notes for it, too, when it was read

        void set(const Failure& why);
        std::optional<Clock::time_point> readAt() const;
    };
    struct Entry {
        Variable variable;
        std::vector<std::size_t> parts;           // by their first elements
        std::vector<quint32> frozen;              // see freeze()
        ValueState taken = ValueState::NeverRead; // when it was taken last, as judge() has it
        bool touched = false;
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

    std::vector<Variable> variables() const;
    RefreshPlan plan() const;
    void makeParts(const RefreshPlan& plan);
    std::vector<Part*> partsIn(const RW_VAR& request);
    static int elementsOf(const std::vector<Part*>& parts, int begin);
    Block& blockOf(const RW_VAR& request);
    KnownBlock& knownBlock(const RW_VAR& request, const BlockKey& key);
    void fill(Block& block, const RW_VAR& request);
    Clock::duration staleAfter() const;
    ValueState stateOf(const Part& part, Clock::time_point now) const;
    void judge(const Entry& entry, Clock::time_point now, qint64 epochMs, CyclicValue* value) const;
    void takeOut(const std::vector<int>& indexes, std::size_t first, std::size_t end, const DriverCalls& calls,
                 std::vector<CyclicValue>* values) const;
    std::size_t runFrom(const std::vector<int>& indexes, std::size_t first) const;
    ValueState stateOf(const Entry& entry, Clock::time_point now) const;
    void touchAt(std::size_t index);
    bool shows(const Variable& bit) const;

    const Settings m_settings;
    std::vector<Entry> m_variables;
    bool m_frozen = false;
    bool m_watched = false;
    std::vector<int> m_touched;
    Clock::time_point m_agesFrom;       // before that nothing can become stale that is not
    std::vector<Part> m_parts;          // by station, area and first element of what is asked
    std::map<BlockKey, Block> m_blocks; // as the driver made them, each looked up once
    KnownBlock* m_latest = nullptr;     // of m_blocks: what blockOf() gave last
    unsigned long m_setbacks = 1;       // how often parts failed or became doubtful
};

} // namespace plc

#endif
