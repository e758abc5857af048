// SPDX-License-Identifier: MIT
/// \file
/// \brief Which elements of a range can be read: blocks are halved where the controller refuses them.
#ifndef PANEL_SCAN_ELEMENT_SCAN_H
#define PANEL_SCAN_ELEMENT_SCAN_H

#include "panel/session/read_answer.h"
#include "runtime/model/variable.h"

#include <functional>
#include <vector>

namespace plc
{

/// Neighbours with the same answer.
struct ScannedRun {
    Variable elements;
    ReadAnswer answer; ///< Interrupted: they were not asked for
};

struct ElementCounts {
    long given = 0;
    long refused = 0;
    long unknown = 0; ///< no usable answer, or not asked
    long reads = 0;
    int mostAtOnce = 0; ///< elements that were given by one read
    int tooMany = 0;    ///< that were refused for their number, though each was given; 0: none were
    std::vector<Variable> notTogether; ///< the same for something else
};

/// Every element that is told as given was in a reply, and every one that is told as refused was refused by itself;
/// where the controller refuses the function, three of them were. Two requests in a row without an answer end it.
class ElementScan
{
public:
    using Read = std::function<ReadAnswer(const Variable& elements)>;
    using Tell = std::function<void(const ScannedRun& run)>;

    /// \param mostAtOnce elements of one read
    /// \param tell is called for each run, in their order, as soon as its end is known
    ElementScan(Read read, int mostAtOnce, Tell tell);

    void scan(const Variable& range);

    const ElementCounts& counts() const { return m_counts; }

    /// \return how many elements of the range are known, or are not asked for any more
    int done() const { return m_done; }

private:
    ReadAnswer ask(const Variable& elements);
    bool scanBlock(const Variable& elements);
    bool isInHole(const Variable& elements) const;
    void askOneByOne(const Variable& elements);
    void halve(const Variable& elements);
    bool isFunctionRefused(const ReadAnswer& refusal);
    void noteRefusedTogether(const Variable& elements);
    void add(const Variable& elements, const ReadAnswer& answer);
    void count(const Variable& elements, const ReadAnswer& answer);
    void flush();

    const Read m_read;
    const Tell m_tell;
    int m_most;
    int m_unanswered = 0; // requests in a row
    int m_done = 0;
    bool m_isFunctionTried = false;
    Variable m_range;
    ReadAnswer m_last; // not Given: nothing more is asked for, with this for the rest
    ScannedRun m_run;  // not told yet; no elements: there is none
    ElementCounts m_counts;
};

} // namespace plc

#endif
