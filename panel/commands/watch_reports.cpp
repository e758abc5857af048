// SPDX-License-Identifier: MIT
#include "panel/commands/watch_reports.h"

namespace plc
{

void addCyclic(const Options& options, Runtime* runtime)
{
    for (const Variable& variable : options.variables)
        runtime->addCyclic(variable);
    for (const ListedVariable& listed : options.listed)
        runtime->addCyclic(listed.elements);
}

WatchReport reportOfLink(const Options& options, const Runtime& runtime)
{
    WatchReport report;
    report.view.controller = QStringLiteral("%1:%2").arg(options.settings.host).arg(options.settings.port);
    report.view.station = options.settings.station;
    report.view.link = runtime.linkState();
    if (options.settings.multiStation)
        report.view.stations = runtime.stations();
    if (options.statistics)
        report.statistics = runtime.statistics();
    return report;
}

WatchReport reportOf(const Options& options, const WatchedVariables& variables, const Runtime& runtime)
{
    WatchReport report = reportOfLink(options, runtime);
    report.rows.variables = &variables;
    report.rows.values = [&runtime](int first, std::vector<CyclicValue>* values) {
        runtime.values(first, values);
    };
    return report;
}

} // namespace plc
