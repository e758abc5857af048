// SPDX-License-Identifier: MIT
// The account that the runtime keeps of the driver's write list, which it cannot see, against such a list.

#include "properties/property.h"
#include "runtime/cycle/request_ledger.h"

#include <map>
#include <ostream>
#include <set>
#include <vector>

namespace plc
{

namespace
{

/// The driver's write list as far as the ledger can see it, with the true end of each request.
class FakeDriver
{
public:
    explicit FakeDriver(bool multiStation) : m_multiStation(multiStation) {}

    int size() const { return static_cast<int>(m_list.size()); }

    void queue(const LedgerEntry& entry)
    {
        for (std::size_t index = 1; index < m_list.size(); ++index) {
            Variable& queued = m_list[index].elements;
            const Variable& newer = entry.elements;
            if (queued.station == newer.station && queued.element == newer.element &&
                queued.count == newer.count) {
                ends[m_list[index].key] = RequestEnd::Replaced;
                m_list[index] = entry;
                return;
            }
        }
        m_list.push_back(entry);
    }

    /// \return true when a frame of the head is handed out
    bool poll(const std::set<int>& off)
    {
        while (!m_inFlight && !m_list.empty() && off.count(m_list.front().elements.station) != 0)
            remove(0, RequestEnd::Discarded);
        m_inFlight = !m_list.empty();
        return m_inFlight;
    }

    void answer()
    {
        m_inFlight = false;
        remove(0, RequestEnd::Done);
    }

    int giveUp()
    {
        m_inFlight = false;
        const int station = m_list.front().elements.station;
        remove(0, RequestEnd::Failed);
        for (std::size_t index = 0; index < m_list.size();) {
            if (!m_multiStation || m_list[index].elements.station == station)
                remove(index, RequestEnd::Purged);
            else
                ++index;
        }
        return station;
    }

    std::map<int, RequestEnd> ends;

private:
    void remove(std::size_t index, RequestEnd end)
    {
        ends[m_list[index].key] = end;
        m_list.erase(m_list.begin() + static_cast<std::ptrdiff_t>(index));
    }

    const bool m_multiStation;
    bool m_inFlight = false;
    std::vector<LedgerEntry> m_list;
};

// A write that is queued, or a turn of the communication thread.
struct Turn {
    bool queues = false;
    int element = 0;
    int count = 1;
    int station = 1;
    int off = 1; // a station that is switched off
    int end = 0; // of the frame: 0 given up, 1 to 3 answered, 4 retried
};

std::ostream& operator<<(std::ostream& out, const Turn& turn)
{
    if (turn.queues)
        return out << "{queue " << turn.element << 'x' << turn.count << '@' << turn.station << '}';
    return out << "{turn, station " << turn.off << " off, end " << turn.end << '}';
}

rc::Gen<Turn> anyTurn()
{
    return rc::gen::build<Turn>(
        rc::gen::set(&Turn::queues), rc::gen::set(&Turn::element, rc::gen::inRange(0, 6)),
        rc::gen::set(&Turn::count, rc::gen::inRange(1, 4)),
        rc::gen::set(&Turn::station, rc::gen::inRange(1, 3)),
        rc::gen::set(&Turn::off, rc::gen::inRange(1, 7)), rc::gen::set(&Turn::end, rc::gen::inRange(0, 5)));
}

class Both
{
public:
    explicit Both(bool multiStation) : m_driver(multiStation), m_ledger(multiStation) {}

    void play(const Turn& turn)
    {
        if (turn.queues)
            queue(turn);
        else
            run(turn);
        RC_ASSERT(m_ledger.size() == m_driver.size());
        RC_ASSERT(m_told == m_driver.ends);
    }

private:
    void collect(const RequestLedger::Ended& ended)
    {
        for (const EndedRequest& request : ended) {
            RC_ASSERT(m_told.count(request.key) == 0u); // or it ended twice
            m_told[request.key] = request.end;
        }
    }

    void queue(const Turn& turn)
    {
        LedgerEntry entry;
        entry.key = m_nextKey++;
        entry.elements.element = turn.element;
        entry.elements.count = turn.count;
        entry.elements.station = turn.station;
        m_driver.queue(entry);
        collect(m_ledger.queued(entry, m_driver.size()));
    }

    void run(const Turn& turn)
    {
        const bool due = m_driver.poll({turn.off});
        collect(m_ledger.polled(m_driver.size()));
        if (!due || turn.end == 4)
            return;
        if (turn.end == 0) {
            const int station = m_driver.giveUp();
            collect(m_ledger.givenUp(true, station, m_driver.size()));
        } else {
            m_driver.answer();
            collect(m_ledger.answered(m_driver.size()));
        }
    }

    FakeDriver m_driver;
    RequestLedger m_ledger;
    std::map<int, RequestEnd> m_told;
    int m_nextKey = 1;
};

} // namespace

TEST(Ledger, AgreesWithTheDriverOnTheEndOfEveryRequest)
{
    test::holds(300, [] {
        Both both(*rc::gen::arbitrary<bool>());
        for (const Turn& turn : *rc::gen::container<std::vector<Turn>>(anyTurn()))
            both.play(turn);
    });
}

} // namespace plc
