// SPDX-License-Identifier: MIT
#include "panel/scan/element_scan.h"

#include "runtime/modbus/protocol.h"

#include <algorithm>

namespace plc
{

namespace
{

const int mostUnanswered = 2; // requests in a row

Variable part(Variable elements, int from, int count)
{
    elements.element += from;
    elements.count = count;
    return elements;
}

bool isSame(const ReadAnswer& a, const ReadAnswer& b)
{
    return a.kind == b.kind && a.words == b.words;
}

} // namespace

ElementScan::ElementScan(Read read, int mostAtOnce, Tell tell)
    : m_read(std::move(read)), m_tell(std::move(tell)), m_most(mostAtOnce)
{
}

void ElementScan::scan(const Variable& range)
{
    m_last = {};
    m_unanswered = 0;
    m_isFunctionTried = false;
    m_range = range;
    m_run.elements = part(range, 0, 0);
    for (m_done = 0; m_done < range.count && m_last.kind == ReadAnswer::Given;)
        scanBlock(part(range, m_done, std::min(m_most, range.count - m_done)));
    if (m_done < range.count)
        add(part(range, m_done, range.count - m_done), m_last);
    flush();
}

ReadAnswer ElementScan::ask(const Variable& elements)
{
    if (m_last.kind != ReadAnswer::Given)
        return m_last;
    const ReadAnswer answer = m_read(elements);
    m_counts.reads += answer.kind == ReadAnswer::Interrupted ? 0 : 1;
    m_unanswered = answer.kind == ReadAnswer::Unanswered ? m_unanswered + 1 : 0;
    if (answer.kind == ReadAnswer::NotConnected || answer.kind == ReadAnswer::Interrupted)
        m_last = answer;
    if (m_unanswered == mostUnanswered)
        m_last = {ReadAnswer::Interrupted,
                  QStringLiteral("the %1 requests before were not answered").arg(mostUnanswered)};
    return answer;
}

/// \return true when one read gave all of them
bool ElementScan::scanBlock(const Variable& elements)
{
    const ReadAnswer answer = ask(elements);
    const bool isRefused = answer.kind == ReadAnswer::Refused;
    if (isRefused && isFunctionRefused(answer))
        return false;
    if (isRefused && elements.count > 1) {
        halve(elements);
        return false;
    }
    if (answer.kind == ReadAnswer::Given)
        m_counts.mostAtOnce = std::max(m_counts.mostAtOnce, elements.count);
    add(elements, answer);
    return answer.kind == ReadAnswer::Given;
}

/// In the midst of a hole few are given, and halving would ask for most of them twice.
bool ElementScan::isInHole(const Variable& elements) const
{
    const int few = 8;
    return elements.count <= few && m_run.elements.count > 0 && m_run.answer.kind == ReadAnswer::Refused;
}

void ElementScan::askOneByOne(const Variable& elements)
{
    for (int each = 0; each < elements.count && m_last.kind == ReadAnswer::Given; ++each)
        scanBlock(part(elements, each, 1));
}

void ElementScan::halve(const Variable& elements)
{
    if (isInHole(elements))
        return askOneByOne(elements);
    const int middle = elements.count / 2;
    const bool isLowGiven = scanBlock(part(elements, 0, middle));
    if (m_last.kind != ReadAnswer::Given) // the rest of the range has it, too
        return;
    const bool isHighGiven = scanBlock(part(elements, middle, elements.count - middle));
    if (isLowGiven && isHighGiven)
        noteRefusedTogether(elements);
}

/// An exception 1 is about the function, by which the others would be asked for, too. Some controllers have it for
/// addresses; so three of the range must agree.
bool ElementScan::isFunctionRefused(const ReadAnswer& refusal)
{
    if (refusal.exception != IllegalFunction || m_counts.given > 0 || m_isFunctionTried)
        return false;
    m_isFunctionTried = true;
    for (const int element : {m_done, m_range.count / 2, m_range.count - 1}) {
        if (ask(part(m_range, element, 1)).exception != IllegalFunction)
            return false;
    }
    m_last = refusal;
    m_last.words += QStringLiteral(" (three of them were asked for)");
    return true;
}

/// They were given in two. That may be for their number, or for an end of something in the controller that they span.
/// As many from the middle on tell, where no more were ever given.
void ElementScan::noteRefusedTogether(const Variable& elements)
{
    if (elements.count > m_most)
        return;
    const Variable shifted = part(elements, elements.count / 2, elements.count);
    const bool canTell = endOf(shifted) <= endOf(m_range) && elements.count > m_counts.mostAtOnce;
    if (canTell && ask(shifted).kind == ReadAnswer::Refused) {
        m_most = elements.count / 2;
        m_counts.tooMany = elements.count;
    } else {
        m_counts.notTogether.push_back(elements);
    }
}

void ElementScan::add(const Variable& elements, const ReadAnswer& answer)
{
    count(elements, answer);
    m_done += elements.count;
    if (m_run.elements.count > 0 && isSame(m_run.answer, answer)) {
        m_run.elements.count += elements.count;
        return;
    }
    flush();
    m_run = {elements, answer};
}

void ElementScan::count(const Variable& elements, const ReadAnswer& answer)
{
    if (answer.kind == ReadAnswer::Given)
        m_counts.given += elements.count;
    else if (answer.kind == ReadAnswer::Refused)
        m_counts.refused += elements.count;
    else
        m_counts.unknown += elements.count;
}

void ElementScan::flush()
{
    if (m_run.elements.count > 0)
        m_tell(m_run);
    m_run.elements.count = 0;
}

} // namespace plc
