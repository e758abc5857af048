// SPDX-License-Identifier: MIT
#include "panel/commands/check_command.h"

#include "panel/check/check_report.h"
#include "panel/session/element_reader.h"
#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/terminal/output.h"
#include "panel/terminal/progress_line.h"
#include "panel/terminal/terminal.h"
#include "panel/terminal/watch_signals.h"
#include "panel/watch/watched_variables.h"
#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/modbus/return_code_words.h"
#include "runtime/model/counted.h"

namespace plc
{

namespace
{

/// What a list is read by.
struct CheckedList {
    std::vector<Variable> variables; // stations filled in
    std::vector<CheckedPart> parts;
};

std::vector<Variable> variablesOf(const Options& options)
{
    const WatchedVariables watched(options.variables, options.listed);
    std::vector<Variable> variables;
    variables.reserve(static_cast<std::size_t>(watched.size()));
    for (int row = 0; row < watched.size(); ++row)
        variables.push_back(withStation(watched.variable(row), options.settings));
    return variables;
}

std::vector<CheckedPart> partsOf(const std::vector<Variable>& variables, const Settings& settings)
{
    const RefreshPlan plan = refreshPlan(variables, settings);
    std::vector<CheckedPart> parts;
    parts.reserve(variables.size());
    for (std::size_t variable = 0; variable < variables.size(); ++variable) {
        for (const PlannedPart* part = plan.parts.begin(variable); part != plan.parts.end(variable); ++part)
            parts.push_back({variable, askedBy(*part, variables[variable])});
    }
    sortForBlocks(&parts);
    return parts;
}

/// \return what a variable is called
QString nameOf(const Options& options, std::size_t variable)
{
    if (variable < options.variables.size())
        return variableText(options.variables[variable]);
    const ListedVariable& listed = options.listed[variable - options.variables.size()];
    return QStringLiteral("%1 (%2, line %3)")
        .arg(listed.name, variableText(listed.elements), QString::number(listed.line));
}

/// \return the blocks that read more than Modbus allows; remote frames have no such limit
std::vector<LongBlock> longBlocks(const CheckedList& list, const std::vector<DriverBlock>& blocks)
{
    std::vector<LongBlock> tooLong;
    for (const DriverBlock& block : blocks) {
        LongBlock each;
        each.elements = elementsOf(block);
        each.quantity = wordAt(block.frame, quantityOffset);
        each.allowed = byteAt(block.frame, functionOffset) == ReadCoils ? mostCoilsRead : mostRegistersRead;
        for (const CheckedPart& part : partsIn(each.elements, list.parts))
            each.variables.push_back(part.variable);
        sortOnce(&each.variables);
        if (each.quantity > each.allowed)
            tooLong.push_back(each);
    }
    return tooLong;
}

/// \return true when the controller was reached
bool checkBlocks(const Options& options, const CheckedList& list, const std::vector<DriverBlock>& blocks,
                 CheckReport* report)
{
    ProgressLine progress;
    ElementReader reader(options.settings, listenersFor(options.trace, options.captureTo, options.settings),
                         &progress);
    ListCheck check([&reader](const Variable& elements) { return reader.read(elements); });
    std::size_t number = 0;
    for (const DriverBlock& block : blocks) {
        reader.tell(QStringLiteral("checking block %1 of %2, %3 so far")
                        .arg(++number)
                        .arg(blocks.size())
                        .arg(counted(check.reads(), "read")));
        const Variable elements = elementsOf(block);
        check.check(elements, partsIn(elements, list.parts));
    }
    report->findings = check.findings();
    report->reads = check.reads();
    return !reader.neverConnected();
}

bool repeatsAny(const std::vector<Finding>& findings, const std::vector<DriverBlock>& blocks)
{
    for (const Finding& finding : findings) {
        for (const DriverBlock& block : blocks) {
            if (repeats(finding, elementsOf(block)))
                return true;
        }
    }
    return false;
}

/// \return the largest block size below the present one with which the driver makes no block again that was
///         refused for its gap or its length
std::optional<int> remedyFor(const Options& options, const CheckedList& list,
                             const std::vector<Finding>& findings)
{
    BlockPlanner planner(options.settings);
    for (int count = options.settings.maxBlockCount - 1;
         count >= smallestBlockCount && WatchSignals::wait(0) != WatchSignals::End; --count) {
        if (!repeatsAny(findings, planner.blocks(list.variables, count)))
            return count;
    }
    return std::nullopt;
}

ExitStatus statusOf(const CheckReport& report)
{
    if (isRefused(report))
        return VariablesRefused;
    return isIncomplete(report) ? ControllerFailed : AllGood;
}

void show(const Options& options, const CheckReport& report)
{
    print(options.format == ValueFormat::Json ? checkJson(report) : checkText(report, wantsColours()));
}

} // namespace

ExitStatus runCheck(const Options& options)
{
    CheckedList list;
    list.variables = variablesOf(options);
    const int maxBlockCount = options.settings.maxBlockCount;
    const std::vector<DriverBlock> blocks =
        BlockPlanner(options.settings).blocks(list.variables, maxBlockCount);
    list.parts = partsOf(list.variables, options.settings);
    CheckReport report;
    report.variables = list.variables.size();
    report.nameOf = [&options](std::size_t variable) { return nameOf(options, variable); };
    report.multiStation = options.settings.multiStation;
    report.maxBlockCount = maxBlockCount;
    report.blocks = blocks.size();
    report.limit = blockRefusal(list.variables, maxBlockCount);
    if (!report.limit.isEmpty()) {
        if (!options.settings.remoteMode)
            report.longBlocks = longBlocks(list, blocks);
        show(options, report);
        return LimitBroken;
    }
    WatchSignals::block(); // a signal that comes before ends the program, as is usual
    const bool reached = checkBlocks(options, list, blocks, &report);
    if (needsRemedy(report))
        report.remedy = remedyFor(options, list, report.findings);
    show(options, report);
    if (reached)
        return statusOf(report);
    complainOfNoConnection(options.settings);
    return ControllerNotReached;
}

} // namespace plc
