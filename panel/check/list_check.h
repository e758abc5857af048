// SPDX-License-Identifier: MIT
/// \file
/// \brief Which variables of a list a controller refuses: blocks are halved until it is known.
#ifndef PANEL_CHECK_LIST_CHECK_H
#define PANEL_CHECK_LIST_CHECK_H

#include "panel/session/read_answer.h"
#include "runtime/model/variable.h"

#include <QString>

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace plc
{

/// What a variable of the list is read by: a long one in several parts, bits in words as the words.
struct CheckedPart {
    std::size_t variable = 0; ///< its index in the list
    Variable asked;           ///< station filled in
};

struct Finding {
    enum Kind {
        VariableRefused, ///< one part of a variable by itself
        GapRefused, ///< neighbours are given, but not together: the controller does not have what is between
        TooLong,    ///< the same, with nothing between them: it gives only fewer at once
        NotChecked  ///< no usable answer
    };
    Kind kind = VariableRefused;
    Variable elements;      ///< that were asked for together
    Variable culprit;       ///< VariableRefused: from its first refused element on; GapRefused: the gap
    int given = 0;          ///< TooLong: most elements that were given at once
    std::size_t before = 0; ///< GapRefused: the variable that ends where the gap begins
    std::size_t behind = 0; ///< GapRefused: one that begins where it ends
    std::vector<std::size_t> variables; ///< that are in the block, ascending, each once
    QString words;                      ///< what the controller said, or why it was not checked
};

/// Checks one block after the other and remembers what it found. A station that leaves two blocks in a row
/// unanswered, and a link that is down, are asked no further.
class ListCheck
{
public:
    using Read = std::function<ReadAnswer(const Variable& elements)>;

    /// \param read asks the controller, once and again where no answer came
    explicit ListCheck(Read read) : m_read(std::move(read)) {}

    /// \param block as the driver reads it \param parts that it refreshes, at least one
    void check(const Variable& block, std::vector<CheckedPart> parts);

    const std::vector<Finding>& findings() const { return m_findings; }
    long reads() const { return m_reads; }

private:
    using Parts = std::vector<CheckedPart>;

    ReadAnswer ask(const Variable& elements);
    ReadAnswer askUnlessGivenUp(const Variable& elements);
    void judge(const Variable& elements, const Parts& parts, const ReadAnswer& answer);
    void halve(const Variable& elements, const Parts& parts, const ReadAnswer& refusal);
    void refused(const Parts& parts, const ReadAnswer& refusal);
    void refusedTogether(const Variable& elements, const Parts& low, const Parts& high,
                         const ReadAnswer& refusal);
    Variable firstRefused(const Variable& elements);
    void add(Finding finding, const Parts& parts);

    const Read m_read;
    std::vector<Finding> m_findings;
    std::map<std::pair<int, int>, ReadAnswer> m_answers; // within the block, by first element and count
    std::map<int, int> m_unanswered;                     // blocks in a row, by station
    ReadAnswer m_end;                                    // not Given: nothing more is asked
    long m_reads = 0;
};

/// Puts \a variables into their order, each once.
void sortOnce(std::vector<std::size_t>* variables);

/// Puts \a parts into the order that partsIn() needs: by station, area and first element.
void sortForBlocks(std::vector<CheckedPart>* parts);

/// \param parts sorted by sortForBlocks(), so that few are looked at however many there are
/// \return the parts that \a block reads whole, by their first element
std::vector<CheckedPart> partsIn(const Variable& block, const std::vector<CheckedPart>& parts);

/// \return true when a block reads what \a finding says that the controller does not give at once
bool repeats(const Finding& finding, const Variable& block);

} // namespace plc

#endif
