// SPDX-License-Identifier: MIT
/// \file
/// \brief What plcpanel check found, for people and for programs.
#ifndef PANEL_CHECK_CHECK_REPORT_H
#define PANEL_CHECK_CHECK_REPORT_H

#include "panel/check/list_check.h"

#include <QJsonObject>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace plc
{

/// A block that reads more than Modbus allows.
struct LongBlock {
    Variable elements;
    int quantity = 0; ///< registers or coils
    int allowed = 0;
    std::vector<std::size_t> variables; ///< ascending, each once
};

struct CheckReport {
    std::size_t variables = 0;                  ///< how many there are
    std::function<QString(std::size_t)> nameOf; ///< a variable, as the list and the user have it
    bool multiStation = false;
    std::size_t blocks = 0;
    long reads = 0;
    int maxBlockCount = 0;
    QString limit; ///< why blocks of that size break a limit of Modbus; empty: they do not
    std::vector<LongBlock> longBlocks;
    std::vector<Finding> findings;
    std::optional<int> remedy; ///< the largest smaller block size that avoids refused gaps and lengths
};

/// \return one paragraph for each finding, and a summary; each line ends with a line feed
QString checkText(const CheckReport& report, bool colours);

/// \return the same as lines of JSON: an object for each finding, then one with the summary
QString checkJson(const CheckReport& report);

/// \return how many variables are at fault by themselves
std::size_t refusedVariables(const CheckReport& report);

/// \return true when blocks were refused that no variable is at fault for: smaller ones may not be
bool needsRemedy(const CheckReport& report);

/// \return true when the controller refused something: variables, or blocks that no variable is at fault for
bool isRefused(const CheckReport& report);

/// \return true when something was not answered
bool isIncomplete(const CheckReport& report);

} // namespace plc

#endif
