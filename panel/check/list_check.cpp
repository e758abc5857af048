// SPDX-License-Identifier: MIT
#include "panel/check/list_check.h"

#include <algorithm>
#include <tuple>

namespace plc
{

namespace
{

const int mostUnanswered = 2; // blocks in a row that a station may leave unanswered

bool samePlace(const Variable& a, const Variable& b)
{
    return a.station == b.station && a.area == b.area;
}

std::tuple<int, int, int> orderOf(const Variable& variable)
{
    return {variable.station, variable.area, variable.element};
}

bool lessByElement(const CheckedPart& a, const CheckedPart& b)
{
    return std::make_pair(a.asked.element, a.asked.count) < std::make_pair(b.asked.element, b.asked.count);
}

/// \param parts of one station and area, at least one
Variable spanOf(const std::vector<CheckedPart>& parts)
{
    Variable span = parts.front().asked;
    for (const CheckedPart& part : parts) {
        const int end = std::max(endOf(span), endOf(part.asked));
        span.element = std::min(span.element, part.asked.element);
        span.count = end - span.element;
    }
    return span;
}

bool areOne(const std::vector<CheckedPart>& sorted)
{
    return !lessByElement(sorted.front(), sorted.back());
}

bool endsBefore(const CheckedPart& a, const CheckedPart& b)
{
    return endOf(a.asked) < endOf(b.asked);
}

Finding findingOf(Finding::Kind kind, const Variable& elements, const QString& words)
{
    Finding finding;
    finding.kind = kind;
    finding.elements = elements;
    finding.culprit = elements;
    finding.words = words;
    return finding;
}

} // namespace

void ListCheck::check(const Variable& block, std::vector<CheckedPart> parts)
{
    std::sort(parts.begin(), parts.end(), lessByElement);
    m_answers.clear();
    judge(block, parts, askUnlessGivenUp(block));
}

ReadAnswer ListCheck::askUnlessGivenUp(const Variable& elements)
{
    if (m_unanswered[elements.station] < mostUnanswered)
        return ask(elements);
    return {
        ReadAnswer::Unanswered,
        QStringLiteral("station %1 gave no usable answer for the %2 blocks before and is asked no further")
            .arg(elements.station)
            .arg(mostUnanswered)};
}

/// The same elements are asked for once: variables may overlap.
ReadAnswer ListCheck::ask(const Variable& elements)
{
    if (m_end.kind != ReadAnswer::Given)
        return m_end;
    const std::pair<int, int> key(elements.element, elements.count);
    const auto known = m_answers.find(key);
    if (known != m_answers.end())
        return known->second;
    const ReadAnswer answer = m_read(elements);
    ++m_reads;
    m_answers[key] = answer;
    if (answer.kind == ReadAnswer::NotConnected || answer.kind == ReadAnswer::Interrupted)
        m_end = answer;
    int& unanswered = m_unanswered[elements.station];
    unanswered = answer.kind == ReadAnswer::Unanswered ? unanswered + 1 : 0;
    return answer;
}

void ListCheck::judge(const Variable& elements, const Parts& parts, const ReadAnswer& answer)
{
    switch (answer.kind) {
    case ReadAnswer::Given:
        return;
    case ReadAnswer::Refused:
        return areOne(parts) ? refused(parts, answer) : halve(elements, parts, answer);
    case ReadAnswer::Unanswered:
    case ReadAnswer::NotConnected:
    case ReadAnswer::Interrupted:
        return add(findingOf(Finding::NotChecked, elements, answer.words), parts);
    }
}

void ListCheck::halve(const Variable& elements, const Parts& parts, const ReadAnswer& refusal)
{
    const auto middle = parts.begin() + static_cast<std::ptrdiff_t>(parts.size() / 2);
    const Parts low(parts.begin(), middle);
    const Parts high(middle, parts.end());
    const Variable first = spanOf(low);
    const Variable second = spanOf(high);
    const ReadAnswer firstAnswer = ask(first);
    const ReadAnswer secondAnswer = ask(second);
    judge(first, low, firstAnswer);
    judge(second, high, secondAnswer);
    if (firstAnswer.kind == ReadAnswer::Given && secondAnswer.kind == ReadAnswer::Given)
        refusedTogether(elements, low, high, refusal);
}

void ListCheck::refused(const Parts& parts, const ReadAnswer& refusal)
{
    const Variable& asked = parts.front().asked;
    Finding finding = findingOf(Finding::VariableRefused, asked, refusal.words);
    finding.culprit = firstRefused(asked);
    add(finding, parts);
}

void ListCheck::refusedTogether(const Variable& elements, const Parts& low, const Parts& high,
                                const ReadAnswer& refusal)
{
    const Variable first = spanOf(low);
    Finding finding = findingOf(Finding::TooLong, elements, refusal.words);
    finding.given = std::max(first.count, spanOf(high).count);
    const int gap = high.front().asked.element - endOf(first);
    if (gap > 0) {
        finding.kind = Finding::GapRefused;
        finding.culprit.element = endOf(first);
        finding.culprit.count = gap;
        finding.before = std::max_element(low.begin(), low.end(), endsBefore)->variable;
        finding.behind = high.front().variable;
    }
    Parts parts = low;
    parts.insert(parts.end(), high.begin(), high.end());
    add(finding, parts);
}

/// \return what is left of \a elements, which are refused, from the first one on without which the others
///         before it are given; all of them when no such is found
Variable ListCheck::firstRefused(const Variable& elements)
{
    int given = 0;
    int refused = elements.count;
    while (refused - given > 1) {
        Variable head = elements;
        head.count = given + (refused - given) / 2;
        const ReadAnswer answer = ask(head);
        if (answer.kind != ReadAnswer::Given && answer.kind != ReadAnswer::Refused)
            return elements;
        (answer.kind == ReadAnswer::Given ? given : refused) = head.count;
    }
    Variable rest = elements;
    rest.element += given;
    rest.count -= given;
    return rest;
}

void ListCheck::add(Finding finding, const Parts& parts)
{
    for (const CheckedPart& part : parts)
        finding.variables.push_back(part.variable);
    sortOnce(&finding.variables);
    m_findings.push_back(finding);
}

void sortOnce(std::vector<std::size_t>* variables)
{
    std::sort(variables->begin(), variables->end());
    variables->erase(std::unique(variables->begin(), variables->end()), variables->end());
}

/// Nothing is as large as the parts of a long list, so that they are sorted where they are.
void sortForBlocks(std::vector<CheckedPart>* parts)
{
    std::sort(parts->begin(), parts->end(), [](const CheckedPart& a, const CheckedPart& b) {
        return std::make_pair(orderOf(a.asked), a.variable) < std::make_pair(orderOf(b.asked), b.variable);
    });
}

std::vector<CheckedPart> partsIn(const Variable& block, const std::vector<CheckedPart>& parts)
{
    auto part = std::partition_point(parts.begin(), parts.end(), [&block](const CheckedPart& candidate) {
        return orderOf(candidate.asked) < orderOf(block);
    });
    std::vector<CheckedPart> inside;
    for (; part != parts.end() && samePlace(part->asked, block) && part->asked.element < endOf(block);
         ++part) {
        if (endOf(part->asked) <= endOf(block))
            inside.push_back(*part);
    }
    return inside;
}

bool repeats(const Finding& finding, const Variable& block)
{
    if (!samePlace(finding.elements, block))
        return false;
    if (finding.kind == Finding::TooLong)
        return block.count > finding.given;
    return finding.kind == Finding::GapRefused && block.element < finding.culprit.element &&
           endOf(block) > endOf(finding.culprit);
}

} // namespace plc
